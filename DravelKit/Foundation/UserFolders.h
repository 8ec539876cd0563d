#pragma once

#include <filesystem>

namespace dravel {

// The user's folders after the XDG Base Directory rules and user-dirs.dirs. Read from the environment once, at the
// entry.
struct UserFolders {
    std::filesystem::path home, config, data, state, documents;
    std::filesystem::path locks; // $XDG_RUNTIME_DIR/Tacla, else <state>/Tacla: where advisory locks live

    static UserFolders fromEnvironment();
};

// The running executable, links resolved.
std::filesystem::path programFile();

}
