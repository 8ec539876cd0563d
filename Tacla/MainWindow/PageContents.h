#pragma once

#include "Tacla/AppModel/ModelState.h"
#include "Tacla/MainWindow/Rows/RowContents.h"
#include "Tacla/TaskList/TaskFinder.h"

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the pages and the sidebar show, as values.
namespace tacla {

// The pages of the main window, in the sidebar's order.
enum class Section { today, late, upcoming, done, settings };

inline constexpr std::array sections{Section::today, Section::late, Section::upcoming, Section::done,
                                     Section::settings};

std::string_view rawValue(Section); // "today"
std::string_view title(Section);    // "Aujourd'hui"
dravel::Symbol symbol(Section);
Section sectionOf(const TaskItem&, Day today); // where it is found
std::optional<Section> sectionNamed(std::string_view rawValue);

// One card of tasks. A day's name is made when the card comes into view: there may be thousands.
struct TaskGroup {
    std::string heading;    // the whole title, or what stands before the day's name
    std::optional<Day> day; // the day that the title names
    dravel::Symbol symbol;
    ColourRole role = ColourRole::accent;
    TaskSelection tasks;
    std::string empty; // said instead of the tasks when there are none
    bool showDay = true;
    bool postponable = false; // all of its tasks at once

    std::string title() const;
    bool operator==(const TaskGroup&) const = default;
};

using TaskGroups = std::vector<TaskGroup>;

struct TodayContents {
    std::string overline, headline, detail;
    std::size_t done = 0, total = 0; // of today's tasks
    TaskGroups groups;
};

TodayContents todayContents(const ModelState&);
TaskGroups lateGroups(const ModelState&);
TaskGroups upcomingGroups(const ModelState&);
TaskGroups doneGroups(const ModelState&);
TaskGroups foundGroups(const TaskList&, const Places& found);

// To where all late tasks are postponed at once; the labels announce their access keys.
struct PostponedTo {
    std::string_view label;
    Day day;
};
std::array<PostponedTo, 3> postponements(Day today);

struct Problem {
    std::string text;
    ColourRole role;
    bool offersLineEnds = false; // a button converts the list's ends of lines

    bool operator==(const Problem&) const = default;
};

std::vector<Problem> problems(const ModelState&);

// A page that is one list: late, upcoming or done.
struct ListContents {
    std::string subtitle;
    TaskGroups groups;
    dravel::Symbol emptySymbol{};
    std::string empty; // said when there are no groups
    std::vector<Problem> problems{};
};

ListContents listContents(Section, const ModelState&);

// A time of day in the user's notation: "10:40".
using TimeText = std::function<std::string(Instant)>;

// The block at the foot of the sidebar.
struct SyncBadgeContent {
    dravel::Symbol symbol{};
    std::string title, subtitle;
    bool syncing = false, trouble = false;

    bool operator==(const SyncBadgeContent&) const = default;
};

SyncBadgeContent syncBadge(const ModelState&, const TimeText&);

std::string syncText(const ModelState&, const TimeText&);
std::string calendarSyncText(bool on);
std::string copyText(Instant made, Day today); // when a copy of the list was kept
inline constexpr std::string_view quickEntryCommand = "gapplication action fr.dravel.Tacla new-task";
std::string quickEntryText(const ModelState&); // how to get a key for it, and which it is
std::string trayText(const ModelState&);       // how to live without the icon; nothing where it shows

// How the Google account stands, and what there is to do about it.
std::string accountText(const ModelState&);
std::string clientText(dravel::OAuthClient::Source);

}
