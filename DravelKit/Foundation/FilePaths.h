#pragma once

#include <filesystem>

namespace dravel {

// The absolute path that the links lead to, also when nothing is there yet. Throws FileError (a loop, an unreadable
// folder).
std::filesystem::path followedLinks(const std::filesystem::path&);

// The folder and those above it, 0700 where missing.
void makeFolders(const std::filesystem::path&);

}
