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

    // May the user be asked to unlock the keyring?
    enum class Ask { no, yes };

    enum class Found { found, absent, unreachable };
    struct LookUp {
        Found found = Found::unreachable;
        Secret secret;      // when found
        std::string reason; // French, when unreachable
    };

    // What came of a change: no value when it was made and read back, else the French reason why it was not.
    using Failure = std::optional<std::string>;

    virtual ~Keyring() = default;

    virtual LookUp find(const Item&, Ask, std::stop_token) = 0;
    // Replaces what the item held; label is what the user sees in a keyring manager.
    virtual Failure store(const Item&, const std::string& label, const Secret&, std::stop_token) = 0;
    virtual Failure erase(const Item&, std::stop_token) = 0;
};

}
