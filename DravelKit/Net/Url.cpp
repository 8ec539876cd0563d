#include "DravelKit/Net/Url.h"

#include "DravelKit/Foundation/Text.h"

#include <curl/curl.h>

#include <memory>

namespace dravel {

namespace {

using Owned = std::unique_ptr<char, decltype(&curl_free)>;

std::string part(CURLU* url, CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(url, which, &text, 0) != CURLUE_OK) return {};
    const Owned owned(text, curl_free);
    return text;
}

std::string percentDecoded(std::string_view text) {
    if (text.empty()) return {}; // libcurl would look for the length itself
    int size = 0;
    const Owned decoded(curl_easy_unescape(nullptr, text.data(), static_cast<int>(text.size()), &size), curl_free);
    return decoded ? std::string(decoded.get(), static_cast<std::size_t>(size)) : std::string();
}

}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && (a.empty() || curl_strnequal(a.data(), b.data(), a.size()) != 0);
}

std::string percentEncoded(std::string_view text) {
    if (text.empty()) return {};
    const Owned encoded(curl_easy_escape(nullptr, text.data(), static_cast<int>(text.size())), curl_free);
    return encoded ? std::string(encoded.get()) : std::string();
}

std::string encodedItems(const QueryItems& items) {
    std::string encoded;
    for (const auto& [key, value] : items) {
        if (!encoded.empty()) encoded += '&';
        encoded += percentEncoded(key) + '=' + percentEncoded(value);
    }
    return encoded;
}

QueryItems decodedItems(std::string_view query) {
    QueryItems items;
    for (const auto piece : split(query, "&", false)) {
        const auto equals = piece.find('=');
        const auto value = equals == piece.npos ? std::string_view{} : piece.substr(equals + 1);
        items.emplace_back(percentDecoded(piece.substr(0, equals)), percentDecoded(value));
    }
    return items;
}

std::optional<Url> Url::parse(const std::string& text) {
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> url(curl_url(), curl_url_cleanup);
    if (!url || text.find('\0') != text.npos) return std::nullopt;
    if (curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_DISALLOW_USER) != CURLUE_OK) return std::nullopt;
    Url parsed{.scheme = part(url.get(), CURLUPART_SCHEME),
               .host = part(url.get(), CURLUPART_HOST),
               .port = part(url.get(), CURLUPART_PORT),
               .path = part(url.get(), CURLUPART_PATH),
               .query = part(url.get(), CURLUPART_QUERY),
               .anchor = part(url.get(), CURLUPART_FRAGMENT)};
    if ((parsed.scheme != "http" && parsed.scheme != "https") || parsed.host.empty()) return std::nullopt;
    return parsed;
}

}
