#pragma once

#include "DravelKit/Foundation/OpenFile.h"

namespace dravel {

// Makes the file, whole or not at all; false when something of that name exists.
bool makeFile(const std::filesystem::path& target, std::string_view text, mode_t mode);

// Gives a file another name; false when something of that name exists.
bool renameAsNew(const std::filesystem::path& from, const std::filesystem::path& to);

// Replaces the file that was read (or, for none, makes it with mode 0600) by one with the new text, so that at every
// moment the old or the new one is there whole. False when it is no longer what was read: then nothing has changed.
// Throws FileError; the old file is then there, unless the system refuses even to give it back.
bool replaceFile(const std::filesystem::path& target, const std::optional<Snapshot>& before, std::string_view after);

// Puts the old text back where a killed process, of whichever user, left half of the new one in a file that cannot be
// replaced. What it may neither read nor trust stands in nobody's way.
void finishInterruptedWrite(const std::filesystem::path& target);

// Removes what killed processes left beside the target. Best effort: a leftover harms nobody.
void removeLeftovers(const std::filesystem::path& target);

}
