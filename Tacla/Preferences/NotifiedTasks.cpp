#include "Tacla/Preferences/NotifiedTasks.h"

namespace tacla {

std::vector<std::string> NotifiedTasks::rekeyed(std::vector<std::string> notified,
                                                const std::map<std::string, std::string>& newKeys) {
    for (auto& entry : notified) {
        const auto end = entry.find('@');
        const auto renamed = end == entry.npos ? newKeys.end() : newKeys.find(entry.substr(0, end));
        if (renamed != newKeys.end()) entry.replace(0, end, renamed->second);
    }
    return notified;
}

}
