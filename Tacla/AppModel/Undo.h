#pragma once

#include "DravelKit/Foundation/SafeFile.h"
#include "Tacla/TaskList/TaskItem.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Taking a change of the file back.
namespace tacla {

// The text before the change; none unless the file holds exactly what the change wrote.
std::optional<std::string> undone(const dravel::SafeFile::Change&, std::string_view text);

// From the keys that the change gave to those that its tasks get back.
std::map<std::string, std::string> keysGivenBack(const dravel::SafeFile::Change&);

// The open tasks with a reminder that the change had ended, or moved.
std::vector<TaskItem> remindersGivenBack(const dravel::SafeFile::Change&);

}
