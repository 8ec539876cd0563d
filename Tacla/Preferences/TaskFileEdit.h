#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/UserFolders.h"

namespace tacla {

// Where the list is kept as it was before each change: <state>/Tacla/copies.
std::filesystem::path copiesFolder(const dravel::UserFolders&);

// SafeFile::edit, with a copy of the text that it replaces.
std::optional<dravel::SafeFile::Change> editTaskFile(const std::filesystem::path&, const dravel::SafeFile::Edit&,
                                                     const dravel::UserFolders&, dravel::Instant now);

}
