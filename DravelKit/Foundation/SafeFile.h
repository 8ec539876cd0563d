#pragma once

#include "DravelKit/Foundation/FileError.h"

#include <compare>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Reading and saving whole text files without ever losing a byte: the one routine behind every write of Tacla.
namespace dravel::SafeFile {

using Path = std::filesystem::path;

// What one stat tells of a file's state: its times (a program may set back that of the last change, not the other one),
// its size and its identity. Good enough to notice a change, never to prove that there was none.
struct Modified {
    std::int64_t seconds, nanoseconds, changedSeconds, changedNanoseconds;
    std::int64_t size;
    std::uint64_t inode;
    auto operator<=>(const Modified&) const = default;
};
std::optional<Modified> modified(const Path&); // one stat; none when there is no such file

// The whole file. Throws FileError (system, notUtf8).
std::string readText(const Path&);

// The same, in pieces that end with a line (but for the last one): a long file never stands in memory whole. What a
// piece says counts only once the last one came, for the file may turn out to be unreadable.
void readByLines(const Path&, const std::function<void(std::string_view lines)>&);

// From the text as it stands to the text that shall replace it; none when there is nothing to change.
// May be called more than once, when the file changed meanwhile.
using Edit = std::function<std::optional<std::string>(std::string_view text)>;

struct Change {
    std::string before, after;
};

// Locks, reads, edits, and replaces the file atomically. None when the edit yields none or the same text: then nothing
// was written. Throws FileError; the file is then as it was. Locks live in lockFolder, never beside the user's file;
// where none can live there, the file's own folder is locked.
std::optional<Change> edit(const Path&, const Edit&, const Path& lockFolder);

// Makes the folders (0700 where missing) and the file, unless something of that name exists; true when it was made.
bool create(const Path&, std::string_view text);

// Like edit, and as a whole, for a file of our own that may not exist yet (then the edit gets ""); made with mode 0600.
std::optional<Change> editOwn(const Path&, const Edit&, const Path& lockFolder);
void replaceOwn(const Path&, const std::string& text, const Path& lockFolder);

// Gives the file a name with this ending, and a number where such a file exists, when `mustGo` still says so under the
// lock. The new name, beside what the links lead to; none when it stayed.
std::optional<Path> moveAside(const Path&, const std::string& ending, const std::function<bool()>& mustGo,
                              const Path& lockFolder);

}
