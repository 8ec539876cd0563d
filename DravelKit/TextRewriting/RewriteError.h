#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

namespace dravel {

// Why a text was not rewritten. Holds nothing of the key and nothing of the text.
class RewriteError : public std::runtime_error {
  public:
    enum class Kind {
        noKey,       // neither in the environment nor in the keyring
        badKey,      // not of the shape of a key
        keyring,     // the keyring does not help; detail: the French reason
        keyRefused,  // by the service
        quota,       // too many requests, or no credit
        overloaded,  // the service is, or is out of order
        tooLong,     // more than the service or this room takes
        badText,     // not UTF-8
        refused,     // the service does not treat this text
        cut,         // the answer ended before the text did
        network,     // no whole answer; detail: the French reason
        unreadable,  // the answer is not what the documentation says
        rejected,    // the service finds fault with the request; detail: its word for it
        badSettings, // detail: what is wrong with them, in French
        stopped,     // the stop token asked
    };
    using Wait = std::optional<std::chrono::seconds>;

    explicit RewriteError(Kind kind, const std::string& detail = {}, Wait wait = {});

    // In French, for the user; also what().
    std::string description() const { return what(); }

    const Kind kind;
    const Wait wait; // before another try, when the service named one
};

}
