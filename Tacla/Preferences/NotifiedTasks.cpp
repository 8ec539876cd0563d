#include "Tacla/Preferences/NotifiedTasks.h"

#include <algorithm>

namespace tacla::NotifiedTasks {

namespace {

std::string underNewKey(std::string entry, const NewKeys& newKeys) {
    const auto end = entry.find('@');
    const auto renamed = end == entry.npos ? newKeys.end() : newKeys.find(entry.substr(0, end));
    if (renamed != newKeys.end()) entry.replace(0, end, renamed->second);
    return entry;
}

void addOnce(Notified& list, std::string entry) {
    if (std::ranges::find(list, entry) == list.end()) list.push_back(std::move(entry));
}

}

Notified rekeyed(const Notified& notified, const NewKeys& newKeys) {
    Notified list;
    for (const auto& entry : notified) addOnce(list, underNewKey(entry, newKeys));
    return list;
}

Notified underBothKeys(const Notified& notified, const NewKeys& newKeys) {
    Notified list = notified;
    for (const auto& entry : notified) addOnce(list, underNewKey(entry, newKeys));
    return list;
}

}
