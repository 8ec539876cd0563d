#pragma once

#include "DravelKit/Net/Secret.h"

#include <optional>
#include <stop_token>
#include <string>

namespace dravel {

// The desktop's store of secrets. No call throws; each may block while the user is asked to unlock it.
class Keyring {
  public:
    // What identifies an item.
    struct Item {
        std::string service, account;
    };

    // May the user be asked to unlock the keyring, or to make one?
    enum class Ask { no, yes };

    // Why the keyring did not do what it was asked.
    struct Trouble {
        std::string reason = {}; // French, to stand after " : "
        bool declined = false;   // the user was asked to unlock it, and did not
    };

    enum class Found { found, absent, unreachable };
    struct LookUp {
        Found found = Found::unreachable;
        Secret secret = {};   // when found
        Trouble trouble = {}; // when unreachable
    };

    // What came of a change: none when it was made and read back.
    using Failure = std::optional<Trouble>;

    virtual ~Keyring() = default;

    virtual LookUp find(const Item&, Ask, std::stop_token) = 0;
    // Replaces what the item held; label is what the user sees in a keyring manager.
    [[nodiscard]] virtual Failure store(const Item&, const std::string& label, const Secret&, Ask, std::stop_token) = 0;
    [[nodiscard]] virtual Failure erase(const Item&, std::stop_token) = 0;
};

}
