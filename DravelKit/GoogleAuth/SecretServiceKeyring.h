#pragma once

#include "DravelKit/GoogleAuth/Keyring.h"

#include <chrono>

namespace dravel {

// The Secret Service of the desktop (GNOME Keyring, KWallet …) over the session bus, its default collection.
// Each call talks to the service anew and gives up after the deadline; time spent in the desktop's own dialog does not
// count.
class SecretServiceKeyring final : public Keyring {
  public:
    explicit SecretServiceKeyring(std::chrono::milliseconds deadline = std::chrono::seconds(5)) : deadline_(deadline) {}

    LookUp find(const Item&, Ask, std::stop_token) override;
    Failure store(const Item&, const std::string& label, const Secret&, Ask, std::stop_token) override;
    Failure erase(const Item&, std::stop_token) override;

  private:
    std::chrono::milliseconds deadline_;
};

}
