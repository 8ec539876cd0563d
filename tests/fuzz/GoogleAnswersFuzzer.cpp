#include "DravelKit/GoogleAuth/OAuthClient.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// The client file and the token endpoint's answers: JSON of somebody else's making.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view json(reinterpret_cast<const char*>(data), size);
    dravel::OAuthClient::parse(json);
    dravel::TokenError::parse(json);
    const auto answer = dravel::TokenResponse::parse(json);
    if (answer && (answer->accessToken.isEmpty() || answer->expiresIn.count() < 0)) std::abort();
    return 0;
}
