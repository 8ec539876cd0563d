#include "DravelKit/TextRewriting/KeyStore.h"

#include "DravelKit/TextRewriting/RewriteError.h"

#include <cstdlib>
#include <fstream>

namespace dravel {

namespace {

using Kind = RewriteError::Kind;

const Secret& checked(const Secret& key) {
    constexpr auto allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    const auto& text = key.reveal();
    const bool good = text.starts_with("sk-ant-") && text.size() >= 24 && text.size() <= 512 &&
                      text.find_first_not_of(allowed) == text.npos;
    return good ? key : throw RewriteError(Kind::badKey);
}

// The libraries that carry the key keep copies which we cannot wipe, so no private memory goes into a core: only the
// pages that are files anyway.
void keepMemoryOutOfCores() { std::ofstream("/proc/self/coredump_filter") << "0x30"; }

void check(const Keyring::Failure& failure) {
    if (failure) throw RewriteError(Kind::keyring, failure->reason);
}

}

KeyStore::KeyStore(std::shared_ptr<Keyring> keyring, std::string service, Secret ofEnvironment)
    : keyring_(std::move(keyring)), service_(std::move(service)), ofEnvironment_(std::move(ofEnvironment)) {}

Secret KeyStore::fromEnvironment() {
    const char* const value = std::getenv("ANTHROPIC_API_KEY");
    return Secret(value == nullptr ? "" : value);
}

Secret KeyStore::key(const std::stop_token& stop) const {
    keepMemoryOutOfCores();
    if (!ofEnvironment_.isEmpty()) return checked(ofEnvironment_);
    const auto found = keyring_->find(item(), Keyring::Ask::yes, stop);
    if (stop.stop_requested()) throw RewriteError(Kind::stopped);
    if (found.found == Keyring::Found::unreachable) check(found.trouble);
    return found.found == Keyring::Found::found ? checked(found.secret) : throw RewriteError(Kind::noKey);
}

void KeyStore::store(const Secret& key, const std::stop_token& stop) {
    keepMemoryOutOfCores();
    check(keyring_->store(item(), service_, checked(key), Keyring::Ask::yes, stop));
}

void KeyStore::erase(const std::stop_token& stop) { check(keyring_->erase(item(), stop)); }

}
