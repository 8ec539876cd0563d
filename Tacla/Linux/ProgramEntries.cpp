#include "Tacla/Linux/ProgramEntries.h"

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/Text.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

namespace tacla {

namespace {

using dravel::FileError;
using std::filesystem::path;

// A command line's argument, quoted (Desktop Entry Specification, "The Exec key"), then escaped as a value.
std::string quotedArgument(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '%') quoted += '%'; // else a field code
        if (c == '"' || c == '`' || c == '$') quoted += "\\\\";
        if (c == '\\') quoted += "\\\\\\";
        quoted += c;
    }
    return quoted + '"';
}

// The value of a key in the entry's own group.
std::optional<std::string_view> value(std::string_view text, std::string_view key) {
    bool inside = false;
    for (const auto line : dravel::split(text, "\n")) {
        if (line.starts_with('[')) inside = dravel::trimmedOfWhiteSpaceAndLineBreaks(line) == "[Desktop Entry]";
        const auto equals = line.find('=');
        if (inside && equals != line.npos && dravel::trimmedOfWhiteSpace(line.substr(0, equals)) == key)
            return dravel::trimmedOfWhiteSpaceAndLineBreaks(line.substr(equals + 1));
    }
    return {};
}

// A value as the file has it, without the escapes of the format.
std::string unescaped(std::string_view text) {
    constexpr std::string_view escapes = "sntr", meant = " \n\t\r";
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\' || at + 1 == text.size()) {
            result += text[at];
            continue;
        }
        const auto escape = escapes.find(text[++at]);
        result += escape == escapes.npos ? text[at] : meant[escape];
    }
    return result;
}

// The first word of an Exec value: the reverse of quotedArgument, which others need not have used.
path programOf(std::string_view exec) {
    const auto line = unescaped(exec);
    const bool quoted = line.starts_with('"');
    std::string word;
    for (std::size_t at = quoted ? 1 : 0; at < line.size() && line[at] != (quoted ? '"' : ' '); ++at) {
        if (at + 1 < line.size() && ((quoted && line[at] == '\\') || line.substr(at, 2) == "%%")) ++at;
        word += line[at];
    }
    return word;
}

path found(const path& program, std::string_view searchPath) {
    std::error_code error;
    if (program.has_parent_path()) return std::filesystem::weakly_canonical(program, error);
    for (const auto folder : dravel::split(searchPath, ":", false))
        if (std::filesystem::exists(path(folder) / program, error))
            return std::filesystem::weakly_canonical(path(folder) / program, error);
    return {};
}

}

std::string autostartEntry(const path& program) {
    return "[Desktop Entry]\nType=Application\nName=Tacla\nIcon=fr.dravel.Tacla\nTryExec=" +
           dravel::replacedAll(program.string(), "\\", "\\\\") + "\nExec=" + quotedArgument(program.string()) +
           "\nTerminal=false\nX-GNOME-Autostart-enabled=true\n";
}

LoginItem::Status statusOfAutostartEntry(std::string_view text, const path& program, std::string_view searchPath) {
    using Status = LoginItem::Status;
    if (value(text, "Hidden") == "true" || value(text, "X-GNOME-Autostart-enabled") == "false")
        return Status::switchedOff;
    const auto starts = found(programOf(value(text, "Exec").value_or("")), searchPath);
    const bool ours = value(text, "Type") == "Application" && !starts.empty() && starts == found(program, {});
    return ours ? Status::enabled : Status::foreign;
}

AutostartLoginItem::AutostartLoginItem(const path& configFolder, path program, path lockFolder)
    : file_(configFolder / "autostart" / "fr.dravel.Tacla.desktop"), program_(std::move(program)),
      lockFolder_(std::move(lockFolder)) {}

LoginItem::Status AutostartLoginItem::status() const {
    const char* searchPath = std::getenv("PATH");
    try {
        return statusOfAutostartEntry(dravel::SafeFile::readText(file_), program_, searchPath ? searchPath : "");
    } catch (const FileError&) {
        return Status::absent; // or one that no desktop can read either
    }
}

bool AutostartLoginItem::mayComeUnasked() const {
    return !existsOrDangles(program_.parent_path().parent_path() / "CMakeCache.txt");
}

void AutostartLoginItem::enable() { dravel::SafeFile::replaceOwn(file_, autostartEntry(program_), lockFolder_); }

void AutostartLoginItem::disable() {
    std::error_code error;
    std::filesystem::remove(file_, error);
    if (error) throw FileError(FileError::Kind::system, file_, error.value());
}

std::optional<CommandLineLink> commandLineLink(const path& home, std::string_view searchPath, const path& program,
                                               const std::function<bool(const path&)>& exists) {
    const auto folders = dravel::split(searchPath, ":", false);
    const auto found = [&](std::string_view folder) { return exists(path(folder) / "tacla"); };
    CommandLineLink link{home / ".local" / "bin" / "tacla", program};
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
