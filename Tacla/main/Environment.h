#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Foundation/UserFolders.h"
#include "Tacla/Preferences/Preferences.h"
#include "Tacla/TaskDocument/TaskDocument.h"
#include "Tacla/main/Modules.h"

#include <functional>
#include <string>
#include <vector>

namespace tacla {

// What a command needs of the world around it.
struct Environment {
    std::string taclaFile; // the variable TACLA_FILE
    dravel::UserFolders folders;
    Preferences& preferences;
    dravel::Instant now;
    // Runs a module with the arguments and returns its exit status; what was said so far is written before.
    std::function<int(const Module&, const std::vector<std::string>& arguments)> run;

    std::filesystem::path taskFile() const { return resolvedFile(taclaFile, preferences, folders); }
};

}
