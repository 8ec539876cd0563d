#include "Tacla/Preferences/TaskFileEdit.h"

#include "DravelKit/Foundation/FileCopies.h"

#include <utility>

namespace tacla {

namespace SafeFile = dravel::SafeFile;

std::filesystem::path copiesFolder(const dravel::UserFolders& folders) { return folders.state / "Tacla" / "copies"; }

std::optional<SafeFile::Change> editTaskFile(const std::filesystem::path& file, const SafeFile::Edit& edit,
                                             const dravel::UserFolders& folders, dravel::Instant now) {
    std::optional<std::filesystem::path> copy;
    const auto dropCopy = [&copy] {
        std::error_code ignored;
        if (copy) std::filesystem::remove(*std::exchange(copy, {}), ignored);
    };
    const SafeFile::Edit keeping = [&](std::string_view text) {
        auto after = edit(text);
        dropCopy(); // of a text that an editor replaced meanwhile
        if (after && *after != text) copy = dravel::FileCopies::keep(copiesFolder(folders), file, text, now);
        return after;
    };
    try {
        return SafeFile::edit(file, keeping, folders.locks);
    } catch (const dravel::FileError&) {
        if (!copy) throw;
        dropCopy(); // it may have taken the room that the new text needs
        return SafeFile::edit(file, edit, folders.locks);
    }
}

}
