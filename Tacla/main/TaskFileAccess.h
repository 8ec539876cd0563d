#pragma once

#include "DravelKit/Foundation/SafeFile.h"
#include "Tacla/TaskList/TaskItem.h"
#include "Tacla/main/CommandLine.h"

#include <optional>
#include <vector>

// The task file as the commands see it: either it can be read, or it cannot; either an edit was saved, or it was not.
namespace tacla {

std::optional<std::vector<TaskItem>> readTasks(const std::filesystem::path& file);
std::string unreadable(const std::filesystem::path& file); // the message of that

// None when the edit was saved, else the message: `refused`, unless the file cannot even be read any more.
std::optional<std::string> failureOfEdit(const std::filesystem::path& file, const dravel::SafeFile::Edit&,
                                         const Environment&, std::string refused);

}
