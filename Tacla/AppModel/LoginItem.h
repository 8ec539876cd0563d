#pragma once

namespace tacla {

// Opening at login. A port: an XDG autostart entry in the product.
class LoginItem {
  public:
    virtual ~LoginItem() = default;
    virtual bool isEnabled() const = 0;
    virtual void enable() = 0;  // throws dravel::FileError
    virtual void disable() = 0; // throws dravel::FileError
};

}
