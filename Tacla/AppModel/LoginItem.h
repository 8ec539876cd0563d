#pragma once

#include "DravelKit/Foundation/FileError.h"

#include <optional>
#include <string>

namespace tacla {

// Opening at login. A port: an XDG autostart entry in the product.
class LoginItem {
  public:
    enum class Status {
        absent,
        enabled,     // it starts this program
        switchedOff, // by the user, in the desktop's own settings
        foreign,     // it starts another program, or one that is gone
    };

    virtual ~LoginItem() = default;
    virtual Status status() const = 0;
    virtual bool mayComeUnasked() const { return true; } // not for a program that somebody has just built
    bool isEnabled() const { return status() == Status::enabled; }
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
