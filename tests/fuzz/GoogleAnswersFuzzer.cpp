#include "DravelKit/GoogleAuth/OAuthClient.h"
#include "tests/fuzz/Fuzzer.h"

// The client file and the token endpoint's answers: JSON of somebody else's making.
void fuzz(std::string_view json) {
    dravel::OAuthClient::parse(json);
    dravel::TokenError::parse(json);
    const auto answer = dravel::TokenResponse::parse(json);
    require(!answer || (!answer->accessToken.isEmpty() && answer->expiresIn.count() >= 0));
}
