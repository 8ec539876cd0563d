#pragma once

#include "DravelKit/GoogleAuth/Keyring.h"

#include <map>
#include <mutex>

namespace tacla::testing {

// A keyring of the test's own, tokens by service, as helpful as the test wants it to be.
class MemoryKeyring final : public dravel::Keyring {
  public:
    std::map<std::string, std::string> items;
    std::optional<Trouble> trouble, storeTrouble; // of every call, of store alone
    int asked = 0;                                // how often the user might have seen a dialog

    LookUp find(const Item& item, Ask ask, std::stop_token) override {
        const std::lock_guard lock(mutex_);
        asked += trouble && ask == Ask::yes;
        if (trouble) return {Found::unreachable, {}, told(ask)};
        const auto found = items.find(key(item));
        if (found == items.end()) return {Found::absent, {}, {}};
        return {Found::found, dravel::Secret(found->second), {}};
    }
    Failure store(const Item& item, const std::string&, const dravel::Secret& secret, Ask ask,
                  std::stop_token) override {
        const std::lock_guard lock(mutex_);
        asked += trouble && ask == Ask::yes;
        if (trouble) return told(ask);
        if (storeTrouble) return storeTrouble;
        items[key(item)] = secret.reveal();
        return std::nullopt;
    }
    Failure erase(const Item& item, std::stop_token) override {
        const std::lock_guard lock(mutex_);
        if (!trouble) items.erase(key(item));
        return trouble;
    }

  private:
    static std::string key(const Item& item) {
        return item.account == "trial" ? item.service + " trial" : item.service;
    }

    // Who was not asked declined nothing.
    Trouble told(Ask ask) const { return {trouble->reason, trouble->declined && ask == Ask::yes}; }

    std::mutex mutex_;
};

}
