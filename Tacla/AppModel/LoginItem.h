#pragma once

#include "DravelKit/Foundation/FileError.h"

#include <optional>
#include <string>

namespace tacla {

// Opening at login. A port: an XDG autostart entry in the product.
class LoginItem {
  public:
    virtual ~LoginItem() = default;
    virtual bool isEnabled() const = 0;
    virtual void enable() = 0;  // throws dravel::FileError
    virtual void disable() = 0; // throws dravel::FileError

    // The message of what failed.
    std::optional<std::string> choose(bool on) try {
        on ? enable() : disable();
        return {};
    } catch (const dravel::FileError& error) {
        return "Ouverture au démarrage : " + error.description();
    }
};

}
