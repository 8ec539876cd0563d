#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dravel {

// For the names in addresses and headers: only the ASCII letters have a case.
bool equalIgnoringCase(std::string_view a, std::string_view b);

using QueryItems = std::vector<std::pair<std::string, std::string>>;

// Every byte but the ASCII letters and digits and "-._~" becomes %XX (the unreserved set of RFC 3986).
std::string percentEncoded(std::string_view text);

// key=value&key=value, keys and values percent-encoded, in the order given: a query, or a form as its body.
std::string encodedItems(const QueryItems& items);

// The pieces between "&", each cut at its first "=" and decoded; a piece without "=" has the value "". "%XX" becomes
// its byte, anything else stays, "+" and a lone "%" too.
QueryItems decodedItems(std::string_view query);

// The parts of an absolute http or https address; none when the text is not one, or names a user.
struct Url {
    std::string scheme;        // lower case
    std::string host;          // as it was written; an IPv6 address keeps its brackets
    std::string port;          // decimal digits, or empty
    std::string path;          // "/" when there is none
    std::string query, anchor; // still encoded, without "?" and "#"

    static std::optional<Url> parse(const std::string& text);

    // The host is this very machine: 127.0.0.1 or [::1], and no name that somebody could redirect.
    bool isLoopback() const { return host == "127.0.0.1" || host == "[::1]"; }
};

}
