#pragma once

#include "Tacla/Preferences/Preferences.h"

#include <functional>
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
};

// The user's choice whether Tacla opens at login, which may be made in the desktop's own settings too.
class LaunchAtLogin {
  public:
    // No item: there is nothing to choose. `report` gets the message of what failed.
    LaunchAtLogin(LoginItem*, Preferences&, std::function<void(const std::string&)> report,
                  std::function<void()> changed);

    bool isOn() const { return on_; } // as it was after the last choice
    void apply();                     // at start: on, unless the user chose otherwise
    void choose(bool on);

  private:
    LoginItem* item_;
    Preferences& preferences_;
    std::function<void(const std::string&)> report_;
    std::function<void()> changed_;
    bool on_;
};

}
