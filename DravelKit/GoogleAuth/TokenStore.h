#pragma once

#include "DravelKit/GoogleAuth/GoogleConfig.h"
#include "DravelKit/GoogleAuth/Keyring.h"

#include <atomic>
#include <memory>

namespace dravel {

// Keeps the one secret that survives restarts: the refresh token, in the keyring.
class TokenStore {
  public:
    TokenStore(GoogleConfig, GoogleFolders, std::shared_ptr<Keyring>);

    // Moves the token of an earlier version's file into the keyring first. The user is asked to unlock the keyring
    // once: after a refusal, reading is silent until the next write or removal.
    Keyring::LookUp read(Keyring::Ask, const std::stop_token&);

    // Stores something and takes it away again, so that no token has to be thrown away for want of a keyring.
    [[nodiscard]] Keyring::Failure tryOut(const std::stop_token&);

    // Replaces the token.
    [[nodiscard]] Keyring::Failure write(const Secret& token, const std::stop_token&);

    // Removes the token and the file of the earlier version.
    [[nodiscard]] Keyring::Failure remove(const std::stop_token&);

  private:
    Keyring::Item item(const char* account = "refresh-token") const;
    std::optional<std::filesystem::path> legacyFile() const;
    Keyring::Failure store(const Keyring::Item&, const Secret&, Keyring::Ask, const std::stop_token&);
    Keyring::Failure importLegacyFile(Keyring::Ask, const std::stop_token&);

    const GoogleConfig config_;
    const GoogleFolders folders_;
    const std::shared_ptr<Keyring> keyring_;
    std::atomic<bool> declined_ = false;
};

}
