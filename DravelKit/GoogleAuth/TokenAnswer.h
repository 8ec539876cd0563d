#pragma once

#include "DravelKit/Net/Secret.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace dravel {

// What the token endpoint gives (RFC 6749, section 5.1).
struct TokenResponse {
    Secret accessToken;
    std::chrono::seconds expiresIn{};
    std::optional<Secret> refreshToken;

    // None when the text is not such an answer.
    static std::optional<TokenResponse> parse(std::string_view json);
};

// Why it gives nothing (RFC 6749, section 5.2).
struct TokenError {
    std::string error;
    std::optional<std::string> errorDescription;

    static std::optional<TokenError> parse(std::string_view json);
};

}
