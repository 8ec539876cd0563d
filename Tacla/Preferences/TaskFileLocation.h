#pragma once

#include "DravelKit/Foundation/UserFolders.h"
#include "Tacla/Preferences/Preferences.h"

#include <filesystem>
#include <string>

namespace tacla {

// <documents>/Tacla/taches.md: made on demand by the application.
std::filesystem::path documentsTaskFile(const dravel::UserFolders&);

// The task file in use: TACLA_FILE (empty counts as unset), else the chosen path, else ~/quillo/taches.md where that
// exists, else documentsTaskFile. Absolute.
std::filesystem::path resolvedFile(const std::string& taclaFile, const Preferences&, const dravel::UserFolders&);

}
