#pragma once

#include "Tacla/TaskList/TaskItem.h"
#include "Tacla/TaskList/TaskKeys.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tacla {

using NewKeys = std::map<std::string, std::string>; // of renamed tasks, by their old ones

// A typed title as it may be written: without its "❗" marks, trimmed, and with " - " for each " · ", which would cut
// it into parts, and a space for line breaks of any kind. None when nothing is left, or for bytes that are no UTF-8.
std::optional<std::string> writableTitle(std::string typed);

}

// The task file's text: reading it, and the five edits. Pure; every byte that an edit does not mean to change stays.
namespace tacla::TaskFile {

std::vector<TaskItem> parse(std::string_view text);
// The first task with that key.
std::optional<TaskItem> find(std::string_view text, std::string_view key);

// The first 8 bytes of the SHA-256 digest, in lower-case hexadecimal.
std::string hash(std::string_view);
// Without its leading "❗" marks, trimmed.
std::string dropStrongMark(std::string_view title);

inline constexpr std::string_view newFileText =
    "# Tâches\n\nUne tâche par ligne, cochée dans Tacla ou ici :\n`- [ ] Titre · AAAA-MM-JJ HH:MM` (l'heure est "
    "facultative ; ❗ en tête du titre : prioritaire).\n\n## À faire\n";

struct Renamed {
    std::string text;
    NewKeys keys;
};

// An edit yields none when the key is unknown or nothing would change.
std::string add(std::string_view text, std::string_view title, Day, std::optional<Clock>, bool strong);
std::optional<std::string> setDone(std::string_view text, std::string_view key, bool done, Day today);
std::optional<Renamed> rename(std::string_view text, std::string_view key, std::string_view to);
std::optional<std::string> reschedule(std::string_view text, std::string_view key, Day to, std::optional<Clock>,
                                      Day today);
std::optional<std::string> remove(std::string_view text, std::string_view key);

// The tasks with those keys moved to one day, each keeping its time.
std::optional<std::string> rescheduleAll(std::string_view text, const std::set<KeyNumber>& keys, Day to, Day today);

// A task's line, as it would be written.
std::string line(const TaskItem&);

// The keys of the lines whose task has another key in the new text.
NewKeys renamedKeys(std::string_view from, std::string_view to);

}
