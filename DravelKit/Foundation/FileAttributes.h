#pragma once

#include "DravelKit/Foundation/OpenFile.h"

namespace dravel {

// Gives a new version of a file the owner, group, mode, access list and extended attributes of the old one.
// False when the system does not let us: a rename would then lose something of the user's.
bool copyAttributes(const OpenFile& from, const OpenFile& to);

}
