#include "DravelKit/Foundation/UserFolders.h"

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Foundation/SafeFile.h"

#include <pwd.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <bit>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace dravel {

namespace {

using Path = std::filesystem::path;

// The base directory rules: a relative path in one of the variables is invalid and counts as unset.
std::optional<Path> fromVariable(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value != '/') return {};
    return Path(value);
}

Path homeFolder() {
    if (const auto home = fromVariable("HOME")) return *home;
    const passwd* account = ::getpwuid(::geteuid());
    return account != nullptr && account->pw_dir != nullptr ? Path(account->pw_dir) : Path("/");
}

// One value of user-dirs.dirs, a shell fragment of a fixed form: XDG_DOCUMENTS_DIR="$HOME/Documents".
std::optional<Path> documentsOf(std::string_view text, const Path& home) {
    constexpr std::string_view assignment = "XDG_DOCUMENTS_DIR=\"", homeVariable = "$HOME/";
    std::optional<Path> found;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (!line.starts_with(assignment)) continue;
        std::string value;
        for (std::size_t at = assignment.size(); at < line.size() && line[at] != '"'; ++at) {
            if (line[at] == '\\' && at + 1 < line.size()) ++at;
            value += line[at];
        }
        if (value.starts_with(homeVariable)) found = home / value.substr(homeVariable.size());
        if (value.starts_with('/')) found = value;
    }
    return found;
}

Path documentsFolder(const Path& config, const Path& home) {
    try {
        if (const auto chosen = documentsOf(SafeFile::readText(config / "user-dirs.dirs"), home)) return *chosen;
    } catch (const FileError&) { // most often there is no such file: the usual folder holds
    }
    return home / "Documents";
}

// A job of cron or a su session has no XDG_RUNTIME_DIR, but must meet the application at the same locks.
Path lockFolder(const Path& state) {
    if (const auto runtime = fromVariable("XDG_RUNTIME_DIR")) return *runtime / "Tacla";
    const Path usual = "/run/user/" + std::to_string(::geteuid());
    return (::access(usual.c_str(), W_OK) == 0 ? usual : state) / "Tacla";
}

}

UserFolders UserFolders::fromEnvironment() {
    UserFolders folders;
    folders.home = homeFolder();
    folders.config = fromVariable("XDG_CONFIG_HOME").value_or(folders.home / ".config");
    folders.data = fromVariable("XDG_DATA_HOME").value_or(folders.home / ".local/share");
    folders.state = fromVariable("XDG_STATE_HOME").value_or(folders.home / ".local/state");
    folders.documents = documentsFolder(folders.config, folders.home);
    folders.locks = lockFolder(folders.state);
    return folders;
}

std::filesystem::path programFile() {
    std::error_code noProc;
    auto program = std::filesystem::read_symlink("/proc/self/exe", noProc);
    if (!noProc) return program;
    // A bare chroot: the path that was given to exec, whose address the system tells as a number.
    const auto given = ::getauxval(AT_EXECFN);
    return std::filesystem::canonical(std::bit_cast<const char*>(given));
}

}
