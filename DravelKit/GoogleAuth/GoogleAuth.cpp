#include "DravelKit/GoogleAuth/GoogleAuth.h"

#include "DravelKit/Foundation/Hash.h"
#include "DravelKit/Net/HttpClient.h"
#include "DravelKit/Net/Url.h"

namespace dravel {

namespace {

using Kind = AuthError::Kind;

constexpr std::chrono::seconds margin{60};

// One attempt to sign in: the secrets that tie the callback and the code to it (RFC 7636).
struct Attempt {
    Secret verifier = Secret(randomUrlSafe(48));
    Secret state = Secret(randomUrlSafe(16));
    std::string redirectUri;
};

std::string authorizationUrl(const GoogleEndpoints& endpoints, const OAuthClient& client, const std::string& scope,
                             const Attempt& attempt) {
    return endpoints.authorization + '?' +
           encodedItems({{"client_id", client.clientID},
                         {"redirect_uri", attempt.redirectUri},
                         {"response_type", "code"},
                         {"scope", scope},
                         {"code_challenge", base64Url(sha256(attempt.verifier.reveal()))},
                         {"code_challenge_method", "S256"},
                         {"state", attempt.state.reveal()},
                         {"access_type", "offline"},
                         {"prompt", "consent"}});
}

// The code of the callback, once it has proved to answer this attempt.
std::string codeOf(const std::map<std::string, std::string>& callback, const Attempt& attempt,
                   const GoogleConfig& config) {
    const auto state = callback.find("state");
    if (state == callback.end() || !constantTimeEqual(state->second, attempt.state.reveal()))
        throw AuthError(Kind::loginFailed, "état OAuth inattendu");
    if (const auto code = callback.find("code"); code != callback.end()) return code->second;
    const auto error = callback.find("error");
    throw AuthError(Kind::loginFailed, config.explain(error == callback.end() ? "pas de code" : error->second));
}

void throwIfStopped(const std::stop_token& stop) {
    if (stop.stop_requested()) throw AuthError(Kind::cancelled);
}

}

GoogleAuth::GoogleAuth(GoogleConfig config, GoogleEnvironment environment)
    : config_(std::move(config)), environment_(std::move(environment)),
      tokens_(config_, environment_.folders, environment_.keyring) {}

GoogleAuth::Account GoogleAuth::isSignedIn(Keyring::Ask ask, const std::stop_token& stop) {
    switch (tokens_.read(ask, stop).found) {
    case Keyring::Found::found: return Account::signedIn;
    case Keyring::Found::absent: return Account::signedOut;
    case Keyring::Found::unreachable: break;
    }
    return Account::unreachable;
}

void GoogleAuth::signIn(const OpenBrowser& openBrowser, const std::stop_token& stop) {
    const auto client = OAuthClient::load(config_, environment_.folders);
    const auto keyringTrouble = tokens_.tryOut(stop);
    throwIfStopped(stop);
    if (keyringTrouble) throw AuthError(Kind::loginFailed, keyringTrouble->reason);
    LoopbackReceiver receiver(config_, environment_.receiverClock);
    const Attempt attempt{.redirectUri = "http://127.0.0.1:" + std::to_string(receiver.port())};
    openBrowser(authorizationUrl(environment_.endpoints, client, config_.scope(), attempt));
    const auto code = codeOf(receiver.waitForCallback(patience, stop), attempt, config_);
    const auto tokens = requestToken({{"grant_type", "authorization_code"},
                                      {"code", code},
                                      {"code_verifier", attempt.verifier.reveal()},
                                      {"redirect_uri", attempt.redirectUri},
                                      {"client_id", client.clientID},
                                      {"client_secret", client.clientSecret.reveal()}},
                                     number(), {}, stop);
    if (!tokens.refreshToken) throw AuthError(Kind::loginFailed, "Google n'a pas renvoyé de refresh token");
    throwIfStopped(stop);
    if (const auto failure = tokens_.write(*tokens.refreshToken, stop)) {
        throwIfStopped(stop);
        throw AuthError(Kind::loginFailed, failure->reason);
    }
    keep(tokens, forget());
}

Secret GoogleAuth::validAccessToken(const std::stop_token& stop) {
    if (auto held = heldAccessToken()) return *held;
    const auto asked = number();
    const auto stored = tokens_.read(Keyring::Ask::yes, stop);
    throwIfStopped(stop);
    if (stored.found == Keyring::Found::absent) throw AuthError(Kind::notSignedIn);
    if (stored.found == Keyring::Found::unreachable)
        throw AuthError(Kind::keyringUnreachable, "Pas connecté à Google : " + stored.trouble.reason);
    const auto client = OAuthClient::load(config_, environment_.folders);
    const auto tokens = requestToken({{"grant_type", "refresh_token"},
                                      {"refresh_token", stored.secret.reveal()},
                                      {"client_id", client.clientID},
                                      {"client_secret", client.clientSecret.reveal()}},
                                     asked, stored.secret, stop);
    // Signed out while we asked: the answer belongs to nobody any more.
    if (!keep(tokens, asked)) throw AuthError(Kind::notSignedIn);
    return tokens.accessToken;
}

TokenResponse GoogleAuth::requestToken(const Fields& fields, std::uint64_t asked,
                                       const std::optional<Secret>& refreshToken, const std::stop_token& stop) {
    HttpClient client;
    const auto answer = client.send({.method = "POST",
                                     .url = environment_.endpoints.token,
                                     .headers = {{"Content-Type", "application/x-www-form-urlencoded"}},
                                     .body = encodedItems(fields)},
                                    stop);
    if (answer.status == 200) {
        if (auto tokens = TokenResponse::parse(answer.body)) return *tokens;
        throw AuthError(Kind::unreadableAnswer);
    }
    const auto error = TokenError::parse(answer.body);
    if (!error) throw AuthError(Kind::loginFailed, config_.explain("réponse HTTP inattendue"));
    if (error->error == "invalid_grant") {
        dropAccount(asked, refreshToken, stop);
        throw AuthError(Kind::notSignedIn);
    }
    throw AuthError(Kind::loginFailed, config_.explain(error->errorDescription.value_or(error->error)));
}

// Only the account that Google refused is dropped, not one that has signed in meanwhile, here or in another process.
void GoogleAuth::dropAccount(std::uint64_t asked, const std::optional<Secret>& refreshToken,
                             const std::stop_token& stop) {
    if (number() != asked) return;
    forget();
    if (refreshToken && tokens_.read(Keyring::Ask::no, stop).secret != *refreshToken) return;
    [[maybe_unused]] const auto failure = tokens_.remove(stop); // the next refusal tries again
}

void GoogleAuth::invalidateAccessToken() {
    const std::lock_guard lock(mutex_);
    accessToken_ = Secret();
    expiresAt_ = Instant::min();
}

void GoogleAuth::signOut(const std::stop_token& stop) {
    forget();
    const auto failure = tokens_.remove(stop);
    forget(); // what a refresh brought while the keyring was busy
    if (failure) throw AuthError(Kind::keyringUnreachable, "Déconnexion de Google incomplète : " + failure->reason);
}

std::optional<Secret> GoogleAuth::heldAccessToken() const {
    const auto soon = environment_.now() + margin;
    const std::lock_guard lock(mutex_);
    return expiresAt_ > soon ? std::optional(accessToken_) : std::nullopt;
}

bool GoogleAuth::keep(const TokenResponse& tokens, std::uint64_t asked) {
    const auto expiry = environment_.now() + tokens.expiresIn;
    const std::lock_guard lock(mutex_);
    if (asked != number_) return false;
    accessToken_ = tokens.accessToken;
    expiresAt_ = expiry;
    return true;
}

std::uint64_t GoogleAuth::number() const {
    const std::lock_guard lock(mutex_);
    return number_;
}

std::uint64_t GoogleAuth::forget() {
    const std::lock_guard lock(mutex_);
    accessToken_ = Secret();
    expiresAt_ = Instant::min();
    return ++number_;
}

}
