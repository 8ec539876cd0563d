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

std::string unreadable(const std::filesystem::path& file) { return file.string() + " illisible"; }

std::optional<std::string> failureOfEdit(const std::filesystem::path& file, const SafeFile::Edit& edit,
                                         const Environment& environment, std::string refused) {
    try {
        if (editTaskFile(file, edit, environment.folders, environment.now)) return {};
        return refused;
    } catch (const dravel::FileError&) {
        return readTasks(file) ? refused : unreadable(file);
    }
}

}
