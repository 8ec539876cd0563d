#pragma once

#include "DravelKit/GoogleAuth/Keyring.h"

#include <map>
#include <mutex>

namespace tacla::testing {

// A keyring in memory that is as helpful as the test wants it to be.
class ScriptedKeyring final : public dravel::Keyring {
  public:
    std::map<std::string, std::string> items; // "service/account" to secret
    std::optional<Trouble> trouble;           // of every call
    bool readOnly = false;
    int asked = 0; // how often the user might have seen a dialog

    LookUp find(const Item& item, Ask ask, std::stop_token) override {
        const std::lock_guard lock(mutex_);
        if (trouble) {
            asked += ask == Ask::yes;
            return {Found::unreachable, {}, *trouble};
        }
        const auto found = items.find(item.service + "/" + item.account);
        if (found == items.end()) return {Found::absent, {}, {}};
        return {Found::found, dravel::Secret(found->second), {}};
    }
    Failure store(const Item& item, const std::string&, const dravel::Secret& secret, std::stop_token) override {
        const std::lock_guard lock(mutex_);
        if (trouble) ++asked;
        if (trouble) return trouble;
        if (readOnly) return Trouble{.reason = "le trousseau de clés a refusé l'opération"};
        items[item.service + "/" + item.account] = secret.reveal();
        return std::nullopt;
    }
    Failure erase(const Item& item, std::stop_token) override {
        const std::lock_guard lock(mutex_);
        if (trouble) return trouble;
        items.erase(item.service + "/" + item.account);
        return std::nullopt;
    }

  private:
    std::mutex mutex_;
};

}
