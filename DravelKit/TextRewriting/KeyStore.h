#pragma once

#include "DravelKit/GoogleAuth/Keyring.h"

#include <memory>

namespace dravel {

// The key for the service: in the desktop's keyring and nowhere else. It is read for each use and not kept. From the
// first use on, a core of this process (and of what it starts) holds neither heap nor stacks. Throws RewriteError.
class KeyStore {
  public:
    // The service names the application's item in the keyring.
    KeyStore(std::shared_ptr<Keyring>, std::string service, Secret ofEnvironment = fromEnvironment());

    // What ANTHROPIC_API_KEY holds; it takes precedence, for use without a desktop.
    static Secret fromEnvironment();

    Secret key(const std::stop_token& = {}) const;
    void store(const Secret&, const std::stop_token& = {});
    void erase(const std::stop_token& = {});

  private:
    Keyring::Item item() const { return {.service = service_, .account = "api-key"}; }

    const std::shared_ptr<Keyring> keyring_;
    const std::string service_;
    const Secret ofEnvironment_;
};

}
