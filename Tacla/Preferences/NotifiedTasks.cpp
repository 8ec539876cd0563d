#include "Tacla/Preferences/NotifiedTasks.h"

#include <utility>

namespace tacla::NotifiedTasks {

List rekeyed(List list, const std::map<std::string, std::string>& keys) {
    for (auto& entry : list) {
        const auto at = entry.find('@');
        if (at == std::string::npos) continue;
        const auto renamed = keys.find(entry.substr(0, at));
        if (renamed != keys.end()) entry.replace(0, at, renamed->second);
    }
    return list;
}

List pruned(List list, std::string_view oldestDay) {
    std::erase_if(list, [oldestDay](const std::string& entry) {
        const auto at = entry.find('@');
        const auto moment = at == std::string::npos ? std::string_view() : std::string_view(entry).substr(at + 1);
        return moment < oldestDay;
    });
    return list;
}

}
