#include "Tacla/Shell/CommandLineLink.h"

#include "DravelKit/Foundation/Text.h"

#include <algorithm>

namespace tacla {

namespace {

using std::filesystem::path;

}

std::optional<CommandLineLink> commandLineLink(const path& home, std::string_view searchPath, const path& program,
                                               const std::function<bool(const path&)>& exists) {
    const auto folders = dravel::split(searchPath, ":", false);
    const auto found = [&](std::string_view folder) { return exists(path(folder) / "tacla"); };
    const CommandLineLink link{home / ".local" / "bin" / "tacla", program};
    if (std::any_of(folders.begin(), folders.end(), found) || exists(link.at)) return {};
    return link;
}

void makeCommandLineLink(const std::optional<CommandLineLink>& link) {
    if (!link) return;
    std::error_code ignored;
    std::filesystem::create_directories(link->at.parent_path(), ignored);
    std::filesystem::create_symlink(link->target, link->at, ignored);
}

bool existsOrDangles(const path& file) {
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::symlink_status(file, ignored));
}

}
