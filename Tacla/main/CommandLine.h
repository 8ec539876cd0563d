#pragma once

#include "Tacla/main/Environment.h"
#include "Tacla/main/Terminal.h"

#include <span>
#include <string>

namespace tacla {

// The arguments after the program's name, or after the command's.
using Arguments = std::span<const std::string>;

// Chooses by the arguments alone what to do, does it, and returns the exit status.
int runCommandLine(Arguments, Terminal&, const Environment&);

}
