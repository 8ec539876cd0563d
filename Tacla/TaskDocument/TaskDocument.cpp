#include "Tacla/AppModel/TaskFileBinding.h"

#include "DravelKit/Foundation/FileCopies.h"
#include "Tacla/Preferences/TaskFileEdit.h"
#include "Tacla/TaskList/TaskFile.h"

#include <utility>

namespace tacla {

TaskFileBinding::TaskFileBinding(std::filesystem::path file, dravel::UserFolders folders)
    : path_(std::move(file)), folders_(std::move(folders)) {}

Tasks TaskFileBinding::read() {
    // The time is taken before the text: a save between the two is then read twice rather than never.
    const auto stamp = onDisk();
    unreadable_ = true;
    const auto text = dravel::SafeFile::readText(path_);
    unreadable_ = false;
    known_ = stamp;
    return TaskFile::parse(text);
}

std::optional<dravel::SafeFile::Change> TaskFileBinding::edit(const dravel::SafeFile::Edit& change, Instant now) const {
    return editTaskFile(path_, change, folders_, now);
}

void TaskFileBinding::pruneCopies(Instant now) const { dravel::FileCopies::prune(copiesFolder(folders_), now); }

void TaskFileBinding::create() const { dravel::SafeFile::create(path_, TaskFile::newFileText); }

}
