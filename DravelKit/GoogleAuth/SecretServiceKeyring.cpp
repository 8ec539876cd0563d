#include "DravelKit/GoogleAuth/SecretServiceKeyring.h"

#include "DravelKit/Foundation/Text.h"
#include "DravelKit/GoogleAuth/SecretServiceVisit.h"

#include <algorithm>

namespace dravel {

namespace {

using Visit = SecretServiceVisit;

// The service said yes, and yet a second look does not show it: some answer so when they are locked.
Keyring::Trouble unconfirmed() { return {.reason = "le trousseau de clés n'a pas confirmé l'opération"}; }

}

Keyring::LookUp SecretServiceKeyring::find(const Item& item, Ask ask, std::stop_token stop) {
    try {
        Visit visit(item, deadline_, stop);
        const auto items = visit.searchUnlocked(ask);
        if (items.empty()) return {.found = Found::absent, .secret = {}, .trouble = {}};
        auto secret = visit.secretOf(items.front().get());
        if (secret.isEmpty() || !isValidUtf8(secret.reveal()))
            return {.found = Found::absent, .secret = {}, .trouble = {}};
        return {.found = Found::found, .secret = std::move(secret), .trouble = {}};
    } catch (const Visit::KeyringTrouble& problem) {
        return {.found = Found::unreachable, .secret = {}, .trouble = problem.trouble};
    }
}

Keyring::Failure SecretServiceKeyring::store(const Item& item, const std::string& label, const Secret& secret,
                                             std::stop_token stop) {
    try {
        Visit visit(item, deadline_, stop);
        visit.searchUnlocked(Ask::yes);
        visit.store(label, secret);
        // Read back. What else carries our attributes is older.
        const auto items = visit.search();
        const auto ours = std::find_if(items.begin(), items.end(),
                                       [&](const auto& found) { return visit.secretOf(found.get()) == secret; });
        if (ours == items.end()) return unconfirmed();
        for (auto other = items.begin(); other != items.end(); ++other)
            if (other != ours) visit.erase(other->get());
        return std::nullopt;
    } catch (const Visit::KeyringTrouble& problem) {
        return problem.trouble;
    }
}

Keyring::Failure SecretServiceKeyring::erase(const Item& item, std::stop_token stop) {
    try {
        Visit visit(item, deadline_, stop);
        for (const auto& found : visit.searchUnlocked(Ask::yes)) visit.erase(found.get());
        return visit.search().empty() ? std::nullopt : Failure(unconfirmed());
    } catch (const Visit::KeyringTrouble& problem) {
        return problem.trouble;
    }
}

}
