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

    // Moves the token of an earlier version's file into the keyring first, once. The user is asked to unlock the
    // keyring at most once in the background: after a refusal, reading is silent until the next write or delete.
    Keyring::LookUp read(std::stop_token);

    // Only in the keyring, read back. Throws AuthError (keyringUnreachable).
    void write(const Secret& token, std::stop_token);

    // Removes the token and the file of the earlier version. Throws AuthError (keyringUnreachable) when the token
    // stays.
    void remove(std::stop_token);

  private:
    void importLegacyFile(std::stop_token);

    const GoogleConfig config_;
    const GoogleFolders folders_;
    const std::shared_ptr<Keyring> keyring_;
    std::atomic<bool> declined_ = false;
};

}
