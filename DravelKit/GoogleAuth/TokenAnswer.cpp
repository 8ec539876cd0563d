#include "DravelKit/GoogleAuth/TokenAnswer.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace dravel {

namespace {

using Json = nlohmann::json;

std::optional<std::string> stringMember(const Json& object, const char* name) {
    const auto member = object.find(name);
    if (member == object.end() || !member->is_string()) return std::nullopt;
    return member->get<std::string>();
}

// A member that may be missing or null, but is a string when it is there.
bool isOptionalString(const Json& object, const char* name) {
    const auto member = object.find(name);
    return member == object.end() || member->is_null() || member->is_string();
}

}

std::optional<TokenResponse> TokenResponse::parse(std::string_view text) {
    const Json json = Json::parse(text, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    const auto access = stringMember(json, "access_token");
    const auto expires = json.find("expires_in");
    if (!access || access->empty() || expires == json.end() || !expires->is_number_integer()) return std::nullopt;
    if (!isOptionalString(json, "refresh_token")) return std::nullopt;
    // A lifetime beyond a year would overflow the clock sooner than help anybody.
    constexpr std::int64_t year = std::int64_t{366} * 86400; // in seconds
    const bool huge = expires->is_number_unsigned() && expires->get<std::uint64_t>() > std::uint64_t{year};
    const auto seconds = huge ? year : std::clamp<std::int64_t>(expires->get<std::int64_t>(), 0, year);
    TokenResponse answer{
        .accessToken = Secret(*access), .expiresIn = std::chrono::seconds(seconds), .refreshToken = {}};
    if (const auto refresh = stringMember(json, "refresh_token")) answer.refreshToken = Secret(*refresh);
    return answer;
}

std::optional<TokenError> TokenError::parse(std::string_view text) {
    const Json json = Json::parse(text, nullptr, false);
    if (!json.is_object() || !isOptionalString(json, "error_description")) return std::nullopt;
    const auto error = stringMember(json, "error");
    if (!error) return std::nullopt;
    return TokenError{.error = *error, .errorDescription = stringMember(json, "error_description")};
}

}
