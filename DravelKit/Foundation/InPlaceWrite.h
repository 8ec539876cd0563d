#pragma once

#include "DravelKit/Foundation/OpenFile.h"

namespace dravel {

// For a file that a rename would tear from its hard links, its owner or its mount: writes over it, with both versions
// kept beside it, synced, until the new one is on the disk. False when the file is no longer what was read.
bool writeInPlace(const std::filesystem::path& target, const Snapshot& before, std::string_view after);

// Puts the old text back where a killed process left half of the new one.
void finishInterruptedWrite(const std::filesystem::path& target);

}
