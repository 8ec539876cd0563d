#pragma once

#include "Tacla/main/CommandLine.h"

// The commands on the task file, each a function of the arguments behind its name.
namespace tacla {

int listTasks(Arguments, Terminal&, const Environment&);
int checkTask(Arguments words, Terminal&, const Environment&);
int renameTask(Arguments textAndTitle, Terminal&, const Environment&);

}
