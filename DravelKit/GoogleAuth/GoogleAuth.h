#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/GoogleAuth/AuthError.h"
#include "DravelKit/GoogleAuth/GoogleConfig.h"
#include "DravelKit/GoogleAuth/Keyring.h"
#include "DravelKit/GoogleAuth/LoopbackReceiver.h"
#include "DravelKit/GoogleAuth/OAuthClient.h"
#include "DravelKit/GoogleAuth/TokenStore.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace dravel {

// What signing in needs of the system.
struct GoogleEnvironment {
    GoogleFolders folders;
    GoogleEndpoints endpoints = GoogleEndpoints::published();
    std::shared_ptr<Keyring> keyring;
    Now now = systemNow;
    ReceiverClock receiverClock = {};
};

// The user's Google account: signs in, keeps the refresh token in the keyring and access tokens in memory.
// Blocking calls for background jobs, from any thread; they throw AuthError, and HttpError for the transport.
class GoogleAuth {
  public:
    GoogleAuth(GoogleConfig, GoogleEnvironment);

    // unreachable: the keyring does not answer or is locked. Nothing is forgotten; ask again later.
    enum class Account { signedIn, signedOut, unreachable };
    Account isSignedIn(Keyring::Ask, const std::stop_token& = {});

    // Has the browser opened at an address that only the user may see, and waits for the user that long at most. The
    // keyring has shown before that it keeps what it is given.
    using OpenBrowser = std::function<void(const std::string& address)>; // called on the calling thread
    static constexpr std::chrono::seconds patience{300};
    void signIn(const OpenBrowser&, const std::stop_token& = {});

    // An access token that is good for at least one more minute.
    Secret validAccessToken(const std::stop_token& = {});

    // Forgets the access token that a server has refused.
    void invalidateAccessToken();

    // Forgets the account. Google is not told. Throws keyringUnreachable when the keyring keeps the token.
    void signOut(const std::stop_token& = {});

  private:
    using Fields = std::vector<std::pair<std::string, std::string>>;

    TokenResponse requestToken(const Fields&, std::uint64_t number, const std::optional<Secret>& refreshToken,
                               const std::stop_token&);
    void dropAccount(std::uint64_t number, const std::optional<Secret>& refreshToken, const std::stop_token&);
    std::optional<Secret> heldAccessToken() const;
    bool keep(const TokenResponse&, std::uint64_t number);
    std::uint64_t number() const;
    std::uint64_t forget();

    const GoogleConfig config_;
    const GoogleEnvironment environment_;
    TokenStore tokens_;

    mutable std::mutex mutex_; // guards what follows; never held across a wait
    Secret accessToken_;
    Instant expiresAt_ = Instant::min();
    std::uint64_t number_ = 0; // of the account: another number after each sign-in and sign-out
};

}
