#include "DravelKit/GoogleAuth/CallbackRequest.h"

#include "DravelKit/Foundation/Text.h"
#include "DravelKit/Net/Url.h"

#include <algorithm>

namespace dravel {

namespace {

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return lower(x) == lower(y); });
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// "127.0.0.1", "localhost", each with or without a port. A page on the web can make its own name lead to this machine,
// but the browser still says that name here.
bool namesThisMachine(std::string_view host) {
    const auto colon = host.find(':');
    const auto port = colon == host.npos ? std::string_view{} : host.substr(colon + 1);
    const auto name = host.substr(0, colon);
    return (name == "127.0.0.1" || equalIgnoringCase(name, "localhost")) &&
           port.find_first_not_of("0123456789") == port.npos;
}

// Every Host header of the lines names this machine.
bool hostsAreOurs(std::string_view lines) {
    for (const auto line : split(lines, "\n", false)) {
        const auto colon = line.find(':');
        if (colon == line.npos || !equalIgnoringCase(trimmed(line.substr(0, colon)), "host")) continue;
        if (!namesThisMachine(trimmed(line.substr(colon + 1)))) return false;
    }
    return true;
}

}

bool CallbackRequest::isComplete(std::string_view bytes) {
    return bytes.find("\r\n\r\n") != bytes.npos || bytes.find("\n\n") != bytes.npos;
}

std::optional<CallbackRequest> CallbackRequest::parse(std::string_view bytes) {
    const auto end = bytes.find('\n');
    if (end == bytes.npos) return std::nullopt;
    const auto pieces = split(trimmed(bytes.substr(0, end)), " ");
    if (pieces.size() != 3 || !pieces[2].starts_with("HTTP/")) return std::nullopt;
    auto target = pieces[1].substr(0, pieces[1].find('#'));
    const auto mark = target.find('?');
    CallbackRequest request;
    if (mark != target.npos)
        for (auto& [name, value] : decodedItems(target.substr(mark + 1)))
            if (isValidUtf8(name) && isValidUtf8(value)) request.query.emplace(std::move(name), std::move(value));
    request.isForUs = hostsAreOurs(bytes.substr(end));
    return request;
}

}
