#pragma once

#include "DravelKit/Foundation/SafeFile.h"
#include "Tacla/TaskList/TaskItem.h"
#include "Tacla/main/Environment.h"

#include <optional>
#include <vector>

// The task file as the commands see it: either it can be read, or it cannot; either an edit was saved, or it was not.
namespace tacla {

std::optional<std::vector<TaskItem>> readTasks(const std::filesystem::path& file);

enum class Edited { saved, refused, unreadable };
Edited editTasks(const std::filesystem::path& file, const dravel::SafeFile::Edit&, const Environment&);

}
