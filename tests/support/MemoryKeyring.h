#pragma once

#include "DravelKit/GoogleAuth/Keyring.h"

#include <map>

namespace tacla::testing {

// A keyring of the test's own, by service.
struct MemoryKeyring final : dravel::Keyring {
    std::map<std::string, std::string> items;

    LookUp find(const Item& item, Ask, std::stop_token) override {
        const auto found = items.find(item.service);
        if (found == items.end()) return {Found::absent, {}, {}};
        return {Found::found, dravel::Secret(found->second), {}};
    }
    Failure store(const Item& item, const std::string&, const dravel::Secret& secret, std::stop_token) override {
        items[item.service] = secret.reveal();
        return std::nullopt;
    }
    Failure erase(const Item& item, std::stop_token) override {
        items.erase(item.service);
        return std::nullopt;
    }
};

}
