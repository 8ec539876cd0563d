#include "DravelKit/Net/Url.h"

#include "DravelKit/Foundation/Text.h"

#include <curl/curl.h>

#include <memory>

namespace dravel {

namespace {

bool isUnreserved(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_' || c == '~';
}

// The value of a hexadecimal digit, or -1.
int hexadecimal(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string part(CURLU* url, CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(url, which, &text, 0) != CURLUE_OK) return {};
    const std::unique_ptr<char, decltype(&curl_free)> owned(text, curl_free);
    return text;
}

std::string lowerCaseLetters(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

}

std::string percentEncoded(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (const char c : text) {
        if (isUnreserved(c)) {
            encoded += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        encoded += {'%', digits[byte >> 4], digits[byte & 15]};
    }
    return encoded;
}

std::string percentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? hexadecimal(text[i + 1]) : -1;
        const int low = high >= 0 ? hexadecimal(text[i + 2]) : -1;
        if (low < 0) {
            decoded += text[i];
            continue;
        }
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return decoded;
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
    Url parsed{.scheme = lowerCaseLetters(part(url.get(), CURLUPART_SCHEME)),
               .host = lowerCaseLetters(part(url.get(), CURLUPART_HOST)),
               .port = part(url.get(), CURLUPART_PORT),
               .path = part(url.get(), CURLUPART_PATH),
               .query = part(url.get(), CURLUPART_QUERY),
               .anchor = part(url.get(), CURLUPART_FRAGMENT)};
    if ((parsed.scheme != "http" && parsed.scheme != "https") || parsed.host.empty()) return std::nullopt;
    return parsed;
}

}
