#pragma once

#include "Tacla/AppModel/LoginItem.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Where a desktop and a terminal find the program: the entry for the login, and a link.
namespace tacla {

// The autostart entry that opens the program at login (Desktop Application Autostart Specification).
std::string autostartEntry(const std::filesystem::path& program);

// Whether a desktop starts the program by such an entry; `searchPath` is where it looks for one without a folder.
LoginItem::Status statusOfAutostartEntry(std::string_view text, const std::filesystem::path& program,
                                         std::string_view searchPath);

class AutostartLoginItem final : public LoginItem {
  public:
    AutostartLoginItem(const std::filesystem::path& configFolder, std::filesystem::path program,
                       std::filesystem::path lockFolder);

    Status status() const override;
    bool mayComeUnasked() const override;
    void enable() override;
    void disable() override;

  private:
    std::filesystem::path file_, program_, lockFolder_;
};

// A link by which a terminal finds the program.
struct CommandLineLink {
    std::filesystem::path at, target;
    bool operator==(const CommandLineLink&) const = default;
};

// ~/.local/bin/tacla, unless a terminal finds a `tacla` already, or something stands there. `exists` tells of any entry
// of that name, a dangling link too.
std::optional<CommandLineLink> commandLineLink(const std::filesystem::path& home, std::string_view searchPath,
                                               const std::filesystem::path& program,
                                               const std::function<bool(const std::filesystem::path&)>& exists);

// Never replaces anything. That it cannot be made is no error: the program works without.
void makeCommandLineLink(const std::optional<CommandLineLink>&);

bool existsOrDangles(const std::filesystem::path&);

}
