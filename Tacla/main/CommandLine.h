#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Foundation/UserFolders.h"
#include "Tacla/Preferences/Preferences.h"
#include "Tacla/TaskDocument/TaskDocument.h"
#include "Tacla/main/Programs.h"

#include <functional>
#include <string>
#include <string_view>

namespace tacla {

// What a command needs beside its arguments.
struct Environment {
    std::string taclaFile; // the variable TACLA_FILE
    dravel::UserFolders folders;
    Preferences& preferences;
    dravel::Instant now;
    // Start a program and return its exit status; what was said so far is written before. The first one goes on as that
    // program, the second one waits for its end.
    std::function<int(const Program&, Arguments)> become;
    std::function<int(const Program&, Arguments, std::string_view input)> run;

    std::filesystem::path taskFile() const { return resolvedFile(taclaFile, preferences, folders); }
};

// Chooses by the arguments alone what to do, does it, and returns the exit status.
int runCommandLine(Arguments, Terminal&, const Environment&);

}
