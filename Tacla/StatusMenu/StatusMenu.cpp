#include "Tacla/StatusMenu/StatusMenu.h"

#include "Tacla/AppModel/ModelState.h"
#include "Tacla/TaskList/Labels.h"
#include "Tacla/TaskList/TaskFinder.h"

#include <algorithm>
#include <utility>

namespace tacla {

namespace {

constexpr std::size_t upcomingShown = 15, foundShown = 10;
constexpr std::size_t blockShown = 500; // of late or today's tasks: nobody scrolls through more

MenuEntry separator() { return {.kind = MenuEntry::Kind::separator}; }
MenuEntry header(std::string title) { return {.kind = MenuEntry::Kind::header, .label = std::move(title)}; }

MenuEntry command(std::string label, MenuCommand::Kind kind, std::optional<char> shortcut = {}) {
    return {.label = std::move(label), .shortcut = shortcut, .command = {.kind = kind}};
}

MenuEntry taskEntry(const TaskItem& task, const std::string& label) {
    MenuEntry entry{.label = menuLabel(label), .checked = task.done, .toolTip = drawnTitle(task.title)};
    entry.command = {.kind = MenuCommand::Kind::toggle, .task = task};
    entry.command.task->title = entry.toolTip;
    return entry;
}

std::string lateLabel(const TaskItem& task, Day today) {
    const bool ofToday = task.day == today;
    const auto prefix = !ofToday ? dayAndMonth(*task.day) : task.time ? task.time->description() : std::string();
    return prefix + "  " + task.title;
}

std::string todayLabel(const TaskItem& task) {
    return task.time ? task.time->description() + "  " + task.title : task.title;
}

// "demain 14:30", "aujourd'hui", "04/12 09:00"; nothing without a day.
std::string when(const TaskItem& task, Day today) {
    if (!task.day) return "";
    const auto day = *task.day == today               ? std::string("aujourd'hui")
                     : *task.day == today.plusDays(1) ? std::string("demain")
                                                      : dayAndMonth(*task.day);
    return day + (task.time ? " " + task.time->description() : "");
}

void append(Menu& menu, Menu more) {
    menu.insert(menu.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

template <class Label>
void appendTasks(Menu& block, const TaskSelection& tasks, Label label) {
    const auto shown = std::min(tasks.size(), blockShown);
    for (std::size_t i = 0; i < shown; ++i) {
        const auto task = tasks[i];
        block.push_back(taskEntry(task, label(task)));
    }
    if (shown < tasks.size())
        block.push_back({.label = "… et " + std::to_string(tasks.size() - shown) + " autres", .enabled = false});
}

Menu lateBlock(const ModelState& state) {
    const auto tasks = state.late();
    if (tasks.empty()) return {};
    Menu block{header("En retard")};
    appendTasks(block, tasks, [&](const TaskItem& task) { return lateLabel(task, state.today); });
    block.push_back(separator());
    return block;
}

Menu todayBlock(const ModelState& state) {
    Menu block{header("Aujourd'hui")};
    appendTasks(block, state.todays(), todayLabel);
    if (block.size() == 1) block.push_back({.label = "Rien de prévu", .enabled = false});
    return block;
}

Menu upcomingBlock(const ModelState& state) {
    const auto tasks = state.upcoming(upcomingShown);
    if (tasks.empty()) return {};
    MenuEntry submenu{.kind = MenuEntry::Kind::submenu, .label = "À venir"};
    for (const auto& task : tasks)
        submenu.children.push_back(taskEntry(task, when(task, state.today) + "  " + task.title));
    return {separator(), std::move(submenu)};
}

Menu programBlock(bool agenda, bool updatesAvailable) {
    using Kind = MenuCommand::Kind;
    Menu block{separator(), command("Ouvrir Tacla…", Kind::openWindow, 'o'),
               command("Ouvrir la liste", Kind::openFile)};
    if (agenda) block.push_back(command("Ouvrir l'agenda", Kind::openAgenda));
    block.push_back(separator());
    if (updatesAvailable) block.push_back(command("Rechercher des mises à jour…", Kind::checkForUpdates));
    block.push_back(command("Quitter Tacla", Kind::quit, 'q'));
    return block;
}

}

Menu statusMenu(const ModelState& state, bool updatesAvailable) {
    auto menu = lateBlock(state);
    append(menu, todayBlock(state));
    append(menu, upcomingBlock(state));
    append(menu, programBlock(state.calendarSync, updatesAvailable));
    return menu;
}

std::vector<SearchEntry> searchEntries(const ModelState& state, std::string_view typed) {
    std::vector<SearchEntry> entries;
    for (const auto found : firstFound(state.tasks, typed, foundShown)) {
        const auto task = state.tasks.drawn(found);
        entries.push_back({task.key, task.title, when(task, state.today)});
    }
    return entries;
}

std::string statusTitle(std::size_t open) { return open > 0 ? " " + std::to_string(open) : ""; }

std::string statusToolTip(const ModelState& state) {
    if (state.fileError) return "Tacla · " + *state.fileError;
    const auto open = state.openCount();
    return open > 0 ? "Tacla · " + std::to_string(open) + " à faire" : "Tacla · tout est coché";
}

}
