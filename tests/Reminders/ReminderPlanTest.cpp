#include "Tacla/Reminders/ReminderPlan.h"
#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/TaskFile.h"
#include "tests/support/ModelWorld.h"

namespace tacla::testing {

// "pain@2025-03-04 14:30" as an identifier, whose key part is the title's digest.
static std::string identifier(const std::string& named) {
    const auto at = named.find('@');
    return at == std::string::npos ? named : TaskFile::hash(named.substr(0, at)) + named.substr(at);
}

// Tasks, pending, notified and plan are lists; of the plan, "-" is stale, "+" scheduled, "!" caught up, "x" expired.
struct Case {
    const char *what, *now, *tasks, *pending, *notified, *plan;
    std::chrono::hours zoneMoved = 0h;
};

static std::string planned(const Case& given) {
    Moments pending;
    std::vector<std::string> notified;
    for (const auto& named : linesOf(given.pending, "; ")) {
        const auto when = named.substr(named.find('@') + 1) + " 09:00"; // its own time comes first
        pending[identifier(named)] = moment(when.substr(0, 16)) + given.zoneMoved;
    }
    for (const auto& named : linesOf(given.notified, "; ")) notified.push_back(identifier(named));
    const TaskList tasks(dravel::replacedAll(given.tasks, "; ", "\n"));
    const auto plan = planReminders(tasks, pending, notified, moment(given.now));
    std::string text;
    for (const auto& stale : plan.stale) text += "-" + stale + "; ";
    for (const auto& added : plan.schedule) text += "+" + added.identifier + "; ";
    for (const auto& added : plan.catchUp) text += "!" + added.identifier + "; ";
    for (const auto& entry : plan.expired) text += "x" + entry + "; ";
    return text;
}

static const Case cases[] = {
    {"open dated tasks to come are scheduled, nothing else", "2025-03-04 08:00",
     "- [ ] a · 2025-03-04; - [ ] b · 2025-03-09 07:05; - [x] c · 2025-03-04; - [ ] d; - [ ] e · 2025-03-03 23:59", "",
     "", "+a@2025-03-04; +b@2025-03-09 07:05"},
    {"earlier today is caught up once, the very minute included", "2025-03-04 09:00",
     "- [ ] a · 2025-03-04; - [ ] b · 2025-03-04 08:59; - [ ] c · 2025-03-03", "", "b@2025-03-04 08:59",
     "!a@2025-03-04"},
    {"what fell due in a long sleep waits for its turn", "2025-03-08 08:00",
     "- [ ] a · 2025-03-04; - [x] b · 2025-03-04", "a@2025-03-04; b@2025-03-04", "", "-b@2025-03-04"},
    {"a moment to come is never silenced", "2025-03-04 08:00", "- [ ] a · 2025-03-04", "", "a@2025-03-04",
     "+a@2025-03-04; xa@2025-03-04"},
    {"and rings though its clock had once been ahead", "2025-03-04 09:00", "- [ ] a · 2025-03-04", "a@2025-03-04",
     "a@2025-03-04", ""},
    {"a new zone moves the moment", "2025-03-04 08:00", "- [ ] a · 2025-03-04 14:00", "a@2025-03-04 14:00", "",
     "+a@2025-03-04 14:00", std::chrono::hours(6)},
    {"a new zone that puts the moment in the past rings at once", "2025-03-05 00:30", "- [ ] a · 2025-03-04 23:00",
     "a@2025-03-04 23:00", "", "!a@2025-03-04 23:00", std::chrono::hours(6)},
    {"what rings this very minute by its old zone is left to ring", "2025-03-04 20:00", "- [ ] a · 2025-03-04 14:00",
     "a@2025-03-04 14:00", "", "", std::chrono::hours(6)},
    {"a day beyond its month falls due in the next", "2025-03-01 10:00", "- [ ] a · 2025-02-30", "", "",
     "+a@2025-02-30"},
    {"two tasks of one key and moment ring once", "2025-03-04 08:00",
     "- [ ] a · 2025-03-04; - [ ] a#2 · 2025-03-04; - [ ] a · 2025-03-04", "", "", "+a@2025-03-04; +a#2@2025-03-04"},
    {"the notified list forgets after seven days", "2025-03-11 08:00", "", "",
     "a@2025-03-03 23:59; a@2025-03-04; damaged", "xa@2025-03-03 23:59; xdamaged"},
};

TEST(ReminderPlan, IsWhatMustChange) {
    for (const auto& given : cases) {
        std::string expected;
        for (const auto& line : linesOf(given.plan, "; ")) expected += line.front() + identifier(line.substr(1)) + "; ";
        EXPECT_EQ(planned(given), expected) << given.what;
    }
}

TEST(ReminderContent, SaysWhenHowUrgentAndSinceWhen) {
    const std::tuple<const char*, Day, const char*> table[] = {
        {"- [ ] R&D <b> · 2025-03-04", {2025, 3, 4}, "R&D <b> | Prévue aujourd'hui"},
        {"- [ ] R&D <b> · 2025-03-04", {2025, 3, 6}, "R&D <b> | Prévue le 04/03"},
        {"- [ ] ❗ Banque · 2025-03-04 9:05", {2025, 3, 4}, "Banque | Prévue à 09:05 · prioritaire"},
        {"- [ ] ❗ Banque · 2025-03-04 9:05", {2025, 3, 5}, "Banque | Prévue le 04/03 à 09:05 · prioritaire"},
        {"- [ ] A · 2025-02-30", {2025, 3, 2}, "A | Prévue aujourd'hui"}, // the day on which it falls
        {"- [ ] ❗ TVA · 2025-03-06 14:30 · due 2025-03-04",
         {2025, 3, 6},
         "TVA | Prévue à 14:30 · prioritaire · due le 04/03"},
    };
    for (const auto& [line, today, said] : table) {
        const auto content = reminderContent(TaskFile::parse(line).at(0), today);
        EXPECT_EQ(content.title + " | " + content.body, said);
    }
}

}
