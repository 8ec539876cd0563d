#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

namespace tacla {

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
