#include "Tacla/main/TaskFileAccess.h"

#include "Tacla/Preferences/TaskFileEdit.h"
#include "Tacla/TaskList/TaskFile.h"

namespace tacla {

namespace SafeFile = dravel::SafeFile;

std::optional<std::vector<TaskItem>> readTasks(const std::filesystem::path& file) {
    try {
        return TaskFile::parse(SafeFile::readText(file));
    } catch (const dravel::FileError&) {
        return std::nullopt;
    }
}

Edited editTasks(const std::filesystem::path& file, const SafeFile::Edit& edit, const Environment& environment) {
    try {
        return editTaskFile(file, edit, environment.folders, environment.now) ? Edited::saved : Edited::refused;
    } catch (const dravel::FileError&) {
        return readTasks(file) ? Edited::refused : Edited::unreadable;
    }
}

}
