#pragma once

#include <stdexcept>
#include <string>

namespace dravel {

// Why there is no Google account to work with.
class AuthError : public std::runtime_error {
  public:
    enum class Kind {
        loginFailed,        // detail: the French reason
        missingConfig,      // no OAuth client file
        badConfig,          // the file is not a desktop client's
        notSignedIn,        // there is no account any more: the user has to sign in
        keyringUnreachable, // the keyring does not help, ask again later; detail: the French message
        unreadableAnswer,   // Google's answer is not what its documentation says
        badEndpoints,       // detail: the setting that names a server which is not this machine
        cancelled,          // the stop token asked
    };

    explicit AuthError(Kind kind, std::string detail = {});

    // In French, for the user; also what().
    std::string description() const { return what(); }

    const Kind kind;
    const std::string detail;
};

}
