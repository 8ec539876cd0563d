#pragma once

#include "DravelKit/GoogleAuth/Keyring.h"

#include <map>
#include <mutex>

namespace tacla::testing {

// A keyring of the test's own, by service, as helpful as the test wants it to be.
class MemoryKeyring final : public dravel::Keyring {
  public:
    std::map<std::string, std::string> items;
    std::optional<Trouble> trouble, storeTrouble; // of every call, of store alone
    int asked = 0;                                // how often the user might have seen a dialog

    LookUp find(const Item& item, Ask ask, std::stop_token) override {
        const std::lock_guard lock(mutex_);
        asked += trouble && ask == Ask::yes;
        if (trouble) return {Found::unreachable, {}, *trouble};
        const auto found = items.find(item.service);
        if (found == items.end()) return {Found::absent, {}, {}};
        return {Found::found, dravel::Secret(found->second), {}};
    }
    Failure store(const Item& item, const std::string&, const dravel::Secret& secret, std::stop_token) override {
        const std::lock_guard lock(mutex_);
        asked += trouble.has_value();
        if (trouble || storeTrouble) return trouble ? trouble : storeTrouble;
        items[item.service] = secret.reveal();
        return std::nullopt;
    }
    Failure erase(const Item& item, std::stop_token) override {
        const std::lock_guard lock(mutex_);
        if (!trouble) items.erase(item.service);
        return trouble;
    }

  private:
    std::mutex mutex_;
};

}
