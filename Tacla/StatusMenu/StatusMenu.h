#pragma once

#include "Tacla/TaskList/TaskItem.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tacla {

struct ModelState;

// What an entry of the tray menu does when it is chosen.
struct MenuCommand {
    enum class Kind { none, toggle, openWindow, openFile, openAgenda, checkForUpdates, quit };
    Kind kind = Kind::none;
    std::optional<TaskItem> task{}; // to toggle, as the entry shows it

    bool operator==(const MenuCommand&) const = default;
};

// An entry of the tray menu, as a value. The label is plain text: escaping belongs to who shows it.
struct MenuEntry {
    enum class Kind { action, header, separator, submenu };
    Kind kind = Kind::action;
    std::string label{};
    bool enabled = true;
    std::optional<bool> checked{};  // only entries that can be checked have it
    std::optional<char> shortcut{}; // with Ctrl
    std::string toolTip{};          // the whole title, where a label is cut
    MenuCommand command{};
    std::vector<MenuEntry> children{};

    bool operator==(const MenuEntry&) const = default;
};

using Menu = std::vector<MenuEntry>;

// What the tray menu shows for that state: late tasks, today's, what is coming, and the program's own entries.
Menu statusMenu(const ModelState&, bool updatesAvailable);

// A task that the desktop's own search found.
struct SearchEntry {
    std::string key, title, when; // "demain 14:30"
};

// The open tasks whose titles hold all words that were typed, ten at most.
std::vector<SearchEntry> searchEntries(const ModelState&, std::string_view typed);

// The texts beside and over the tray icon.
std::string statusTitle(std::size_t open);    // " 3", or nothing
std::string statusToolTip(const ModelState&); // "Tacla · 3 à faire", or what is wrong with the list

}
