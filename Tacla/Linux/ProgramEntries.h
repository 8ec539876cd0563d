#pragma once

#include "Tacla/AppModel/LoginItem.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace tacla {

// The autostart entry that opens the program at login (Desktop Application Autostart Specification).
std::string autostartEntry(const std::filesystem::path& program);

// Whether a desktop would start such an entry, its program aside.
bool isActiveAutostartEntry(std::string_view text);

class AutostartLoginItem final : public LoginItem {
  public:
    AutostartLoginItem(const std::filesystem::path& configFolder, std::filesystem::path program,
                       std::filesystem::path lockFolder);

    bool isEnabled() const override;
    void enable() override;
    void disable() override;

  private:
    std::filesystem::path file_, program_, lockFolder_;
};

}
