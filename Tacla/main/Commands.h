#pragma once

#include "Tacla/main/CommandLine.h"

// The commands, each a function of the arguments behind its name.
namespace tacla {

int listTasks(Arguments, Terminal&, const Environment&);
int checkTask(Arguments words, Terminal&, const Environment&);
int renameTask(Arguments textAndTitle, Terminal&, const Environment&);
int syncCalendar(Arguments, Terminal&, const Environment&);

}
