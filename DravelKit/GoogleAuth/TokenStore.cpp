#include "DravelKit/GoogleAuth/TokenStore.h"

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Foundation/SafeFile.h"

namespace dravel {

namespace {

void removeFile(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

}

TokenStore::TokenStore(GoogleConfig config, GoogleFolders folders, std::shared_ptr<Keyring> keyring)
    : config_(std::move(config)), folders_(std::move(folders)), keyring_(std::move(keyring)) {}

Keyring::Item TokenStore::item(const char* account) const {
    return {.service = config_.tokenService, .account = account};
}

std::optional<std::filesystem::path> TokenStore::legacyFile() const {
    if (!config_.legacyToken) return std::nullopt;
    return config_.supportDirectory(folders_) / config_.legacyToken->file;
}

Keyring::Failure TokenStore::store(const Keyring::Item& where, const Secret& secret, Keyring::Ask ask,
                                   const std::stop_token& stop) {
    return keyring_->store(where, config_.appName + " · Google", secret, ask, stop);
}

Keyring::Failure TokenStore::importLegacyFile(Keyring::Ask ask, const std::stop_token& stop) {
    const auto path = legacyFile();
    if (!path || !config_.legacyToken || !SafeFile::modified(*path)) return std::nullopt;
    std::optional<Secret> token;
    try {
        token = config_.legacyToken->read(SafeFile::readText(*path));
    } catch (const FileError& error) {
        if (error.kind != FileError::Kind::notUtf8) return std::nullopt; // it may be readable the next time
    }
    // The file is the only copy until the keyring has confirmed.
    if (token) {
        if (auto failure = store(item(), *token, ask, stop)) return failure;
    }
    removeFile(*path);
    return std::nullopt;
}

Keyring::LookUp TokenStore::read(Keyring::Ask wanted, const std::stop_token& stop) {
    const auto ask = declined_ ? Keyring::Ask::no : wanted;
    Keyring::LookUp found;
    if (const auto failure = importLegacyFile(ask, stop))
        found.trouble = *failure;
    else
        found = keyring_->find(item(), ask, stop);
    if (found.found == Keyring::Found::unreachable && found.trouble.declined) declined_ = true;
    if (found.found == Keyring::Found::found) declined_ = false; // unlocked by somebody else meanwhile
    return found;
}

Keyring::Failure TokenStore::write(const Secret& token, const std::stop_token& stop) {
    declined_ = false;
    return store(item(), token, Keyring::Ask::yes, stop);
}

Keyring::Failure TokenStore::tryOut(const std::stop_token& stop) {
    declined_ = false;
    const auto trial = item("trial");
    if (auto failure = store(trial, Secret("trial"), Keyring::Ask::yes, stop)) return failure;
    return keyring_->erase(trial, stop);
}

Keyring::Failure TokenStore::remove(const std::stop_token& stop) {
    declined_ = false;
    if (const auto path = legacyFile()) removeFile(*path);
    return keyring_->erase(item(), stop);
}

}
