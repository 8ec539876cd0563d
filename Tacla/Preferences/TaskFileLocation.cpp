#include "Tacla/Preferences/TaskFileLocation.h"

#include <system_error>

namespace tacla {

std::filesystem::path documentsTaskFile(const dravel::UserFolders& folders) {
    return folders.documents / "Tacla" / "taches.md";
}

std::filesystem::path resolvedFile(const std::string& taclaFile, const Preferences& preferences,
                                   const dravel::UserFolders& folders) {
    if (!taclaFile.empty()) return std::filesystem::absolute(taclaFile);
    if (const auto chosen = preferences.taskFilePath(); chosen && !chosen->empty())
        return std::filesystem::absolute(*chosen);
    const auto earlier = folders.home / "quillo" / "taches.md";
    std::error_code unreachable;
    return std::filesystem::exists(earlier, unreachable) ? earlier : documentsTaskFile(folders);
}

}
