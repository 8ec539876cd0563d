#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

// The notified list: the reminders that must not ring again, each as its task's key, "@" and its moment's text
// ("3f2a9c0d11e4b7a2@2025-03-04 14:30").
namespace tacla::NotifiedTasks {

using List = std::vector<std::string>;

// Each entry of an old key under the new one, so that a renamed task stays silent.
List rekeyed(List, const std::map<std::string, std::string>& keys);

// Without the entries whose moment sorts before that day's text ("2025-02-25").
List pruned(List, std::string_view oldestDay);

}
