#pragma once

#include "Tacla/TaskList/Clock.h"
#include "Tacla/TaskList/Day.h"

#include <cstddef>
#include <string>
#include <string_view>

// French texts with a rule.
namespace tacla {

std::string dayAndMonth(Day);                                  // "04/03"
std::string counted(std::size_t n, std::string_view singular); // "1 tâche", "3 tâches", "0 tâche"
std::string capitalised(std::string_view);                     // "Mardi 4 mars"
std::string menuLabel(std::string_view);                       // 65 characters or more: the first 63 and "…"
std::string drawnTitle(std::string_view); // without its "❗", and of an endless one the beginning and "…"

}
