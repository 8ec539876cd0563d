#include "DravelKit/GoogleAuth/SecretServiceKeyring.h"

#include <chrono>
#include <iostream>
#include <string>

// keyring_probe find|find-quietly|store|store-quietly|erase SERVICE MILLISECONDS: one call of the keyring class, the
// secret on standard input or output, as the test script wants it.
int main(int argc, char** argv) {
    using dravel::Keyring;
    if (argc != 4) return 2;
    const std::string command = argv[1];
    const Keyring::Item item{.service = argv[2], .account = "refresh-token"};
    dravel::SecretServiceKeyring keyring{std::chrono::milliseconds(std::stoi(argv[3]))};
    const auto ask = command.ends_with("-quietly") ? Keyring::Ask::no : Keyring::Ask::yes;
    if (command.starts_with("find")) {
        const auto found = keyring.find(item, ask, {});
        if (found.found == Keyring::Found::found) std::cout << "found " << found.secret.reveal() << '\n';
        if (found.found == Keyring::Found::absent) std::cout << "absent\n";
        if (found.found == Keyring::Found::unreachable)
            std::cout << (found.trouble.declined ? "declined: " : "unreachable: ") << found.trouble.reason << '\n';
        return 0;
    }
    std::string secret;
    const bool store = command.starts_with("store");
    if (store) std::getline(std::cin, secret);
    const auto failure =
        store ? keyring.store(item, "Essai", dravel::Secret(secret), ask, {}) : keyring.erase(item, {});
    std::cout << (failure ? "failed: " + failure->reason : "done") << '\n';
}
