#pragma once

#include "DravelKit/StandardMenu/AboutPanel.h"

#include <string>

namespace tacla {

// What the About panel tells of this program and of what it is made with.
dravel::About aboutTacla(const std::string& version);

}
