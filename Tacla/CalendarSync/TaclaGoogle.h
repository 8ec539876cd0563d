#pragma once

#include "DravelKit/GoogleAuth/GoogleConfig.h"
#include "Tacla/Preferences/Preferences.h"

namespace tacla {

// The variable that replaces Google's addresses by a server on this machine.
inline constexpr const char* googleBaseVariable = "TACLA_GOOGLE_BASE";

// What Tacla asks of a Google account, and how it presents itself there. The preferences are read at each sign-in.
dravel::GoogleConfig taclaGoogle(const Preferences&);

}
