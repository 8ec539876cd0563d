#include "Tacla/AppModel/TaskFileBinding.h"

#include "Tacla/TaskList/TaskFile.h"

#include <utility>

namespace tacla {

TaskFileBinding::TaskFileBinding(std::filesystem::path file, std::filesystem::path lockFolder)
    : path_(std::move(file)), lockFolder_(std::move(lockFolder)) {}

Tasks TaskFileBinding::read() {
    // The time is taken before the text: a save between the two is then read twice rather than never.
    const auto stamp = onDisk();
    unreadable_ = true;
    const auto text = dravel::SafeFile::readText(path_);
    unreadable_ = false;
    known_ = stamp;
    return TaskFile::parse(text);
}

std::optional<dravel::SafeFile::Change> TaskFileBinding::edit(const dravel::SafeFile::Edit& change) const {
    return dravel::SafeFile::edit(path_, change, lockFolder_);
}

void TaskFileBinding::create() const { dravel::SafeFile::create(path_, TaskFile::newFileText); }

}
