#include "Tacla/CalendarSync/SyncPlan.h"
#include "Tacla/TaskList/TaskFile.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>

namespace tacla {
namespace {

constexpr auto paris = "Europe/Paris";
using Keys = std::map<std::string, std::string>;

CalendarEvent eventOf(const std::string& line) { return calendarEvent(TaskFile::parse(line).at(0), paris).value(); }

std::string keyOf(const std::string& base) { return TaskFile::hash(base); }

// "post Pain", "patch e1 Pain", "delete e2"
std::vector<std::string> inWords(const SyncPlan& plan) {
    std::vector<std::string> words;
    for (const auto& patch : plan.patch) words.push_back("patch " + patch.id + " " + patch.event.summary);
    for (const auto& post : plan.post) words.push_back("post " + post.summary);
    for (const auto& id : plan.remove) words.push_back("delete " + id);
    return words;
}

std::vector<std::string> planned(const std::vector<Managed>& managed, const std::string& text,
                                 const Keys& renamed = {}) {
    return inWords(planSync(managed, TaskFile::parse(text), renamed, paris));
}

TEST(CalendarEvent, SpellsADayOrHalfAnHourOfTheWallClock) {
    const auto at = [](const std::string& clock) {
        return R"({"dateTime":")" + clock + R"(","timeZone":"Europe/Paris"})";
    };
    const auto day = [](const std::string& date) { return R"({"date":")" + date + R"("})"; };
    const struct {
        std::string when, start, end;
    } rows[] = {
        {"2025-03-04 23:45", at("2025-03-04T23:45:00"), at("2025-03-05T00:15:00")},
        {"2025-12-31", day("2025-12-31"), day("2026-01-01")},
        {"2025-02-30", day("2025-03-02"), day("2025-03-03")},
        {"2024-02-30 23:40", at("2024-03-01T23:40:00"), at("2024-03-02T00:10:00")},
        {"2025-03-30 02:30", at("2025-03-30T03:00:00"), at("2025-03-30T03:30:00")}, // skipped in spring
        {"2025-03-30 01:45", at("2025-03-30T01:45:00"), at("2025-03-30T03:15:00")},
        {"2025-10-26 02:45", at("2025-10-26T02:45:00"), at("2025-10-26T03:15:00")}, // repeated in autumn
    };
    for (const auto& [when, start, end] : rows) {
        const auto event = eventOf("- [ ] Pain · " + when);
        EXPECT_EQ(event.start.json(), start) << when;
        EXPECT_EQ(event.end.json(), end) << when;
    }
    EXPECT_FALSE(calendarEvent(TaskFile::parse("- [ ] Pain")[0], paris));
    // In a zone without a name the moment counts, not its wall clock.
    const auto universal = calendarEvent(TaskFile::parse("- [ ] Pain · 2025-03-04 00:30")[0], "UTC").value();
    EXPECT_EQ(universal.start.json(), R"({"dateTime":"2025-03-03T23:30:00","timeZone":"UTC"})");
    EXPECT_EQ(universal.end.json(), R"({"dateTime":"2025-03-04T00:00:00","timeZone":"UTC"})");
}

TEST(CalendarEvent, ShowsWhatTheTaskSays) {
    EXPECT_EQ(eventOf("- [ ] ❗ Banque · 2025-03-04").summary, "❗ Banque");
    EXPECT_EQ(eventOf("- [x] ❗ Banque · 2025-03-04").summary, "✅ Banque");
    EXPECT_EQ(eventOf("- [ ] TVA · 2025-03-06 · due 2025-03-03").description,
              "Échéance d'origine : 2025-03-03\n"
              "Géré par Tacla : modifier la tâche dans Tacla ou dans son fichier, pas l'événement.");
}

TEST(CalendarEvent, IsSignedOverItsVisiblePartsAndSentWhole) {
    const auto event = eventOf("- [ ] Dire \"oui\" · 2025-03-04 14:30");
    const std::string signature =
        TaskFile::hash(R"(Dire "oui"|{"dateTime":"2025-03-04T14:30:00","timeZone":"Europe/Paris"})"
                       R"(|{"dateTime":"2025-03-04T15:00:00","timeZone":"Europe/Paris"})"
                       "|Géré par Tacla : modifier la tâche dans Tacla ou dans son fichier, pas l'événement.");
    EXPECT_EQ(event.signature(), signature);
    auto body = nlohmann::json::parse(R"({"summary":"Dire \"oui\"","transparency":"transparent","visibility":"private",
        "description":"Géré par Tacla : modifier la tâche dans Tacla ou dans son fichier, pas l'événement.",
        "reminders":{"useDefault":false,"overrides":[]},
        "start":{"dateTime":"2025-03-04T14:30:00","timeZone":"Europe/Paris"},
        "end":{"dateTime":"2025-03-04T15:00:00","timeZone":"Europe/Paris"}})");
    body["extendedProperties"]["private"] = {{"tacla", "1"}, {"key", keyOf("dire \"oui\"")}, {"sig", signature}};
    EXPECT_EQ(nlohmann::json::parse(event.postBody()), body);
    body["start"]["date"] = body["end"]["date"] = nullptr;
    EXPECT_EQ(nlohmann::json::parse(event.patchBody()), body);
}

TEST(SyncPlan, ComparesTheCalendarWithTheTasks) {
    const std::string line = "- [ ] Pain · 2025-03-04\n", done = "- [x] Pain · 2025-03-04\n";
    const std::string pain = keyOf("pain"), sig = eventOf(line).signature();
    const Managed current{"e1", pain, sig};
    using Words = std::vector<std::string>;
    EXPECT_EQ(planned({current}, done), Words{"patch e1 ✅ Pain"});
    EXPECT_EQ(planned({current}, "- [ ] Pain\n"), Words{"delete e1"}) << "no longer dated";
    EXPECT_EQ(planned({{"e1", pain, ""}}, line), Words{"patch e1 Pain"}) << "unsigned";
    EXPECT_EQ(planned({{"e1", pain, sig}, {"e2", pain, sig}}, line), Words{"delete e1"}) << "the last one stays";
    EXPECT_EQ(planned({current, current}, line), Words{}) << "listed on two pages";
    EXPECT_EQ(planned({{"e1", "old", sig}}, line, {{"old", pain}}), Words{"patch e1 Pain"})
        << "renamed, same signature";
    EXPECT_EQ(planned({{"e1", "a", ""}, {"e2", "b", ""}}, line + "- [ ] Lait · 2025-03-04\n",
                      {{"a", keyOf("lait")}, {"b", pain}}),
              (Words{"patch e2 Pain", "patch e1 Lait"}));
    EXPECT_EQ(
        planned({current, {"e2", keyOf("pain#2"), ""}}, line + "- [ ] PAIN · 2025-03-05\n- [ ] pain#2 · 2025-03-06\n"),
        (Words{"patch e2 PAIN", "post pain#2"}))
        << "of two tasks with one key, the second is posted";
}

TEST(Listing, TakesOnlyEventsOfOursAndOnlyAWholeAnswer) {
    const auto page = readListingPage(R"({"items":[
        {"id":"e1","extendedProperties":{"private":{"tacla":"1","key":"k1","sig":"s1"}}},
        {"id":"e2","extendedProperties":{"private":{"tacla":"1","key":"k2"}}},
        {"id":"e3","extendedProperties":{"private":{"tacla":"1"}}},
        {"id":"e4","extendedProperties":{"private":{"key":"k4","count":4}}},
        {"id":"e5","extendedProperties":{"shared":{"key":"k5"}}}, {"id":"e6"},
        {"id":"e9","recurringEventId":"e1","extendedProperties":{"private":{"tacla":"1","key":"k1","sig":"s0"}}},
        {"id":"e0","status":"cancelled","extendedProperties":{"private":{"tacla":"1","key":"k1","sig":"s0"}}},
        {"id":7,"extendedProperties":{"private":{"key":"k7"}}}, "e8", null]})");
    EXPECT_EQ(page->managed, (std::vector<Managed>{{"e1", "k1", "s1"}, {"e2", "k2", ""}}));
    EXPECT_EQ(page->nextPageToken, std::nullopt);
    EXPECT_EQ(readListingPage(R"({"nextPageToken":"t"})")->nextPageToken, "t");
    for (const auto* broken :
         {"", "<html>", "[]", "null", R"({"items":[)", R"({"items":{"id":"e1"}})", "{\"items\":\"\xFF\"}"}) {
        EXPECT_FALSE(readListingPage(broken)) << broken;
    }
}

// A calendar that does at once what a plan says.
struct Calendar {
    std::vector<Managed> events;
    int last = 0;

    void apply(const SyncPlan& plan) {
        for (const auto& [id, event] : plan.patch) {
            *std::ranges::find(events, id, &Managed::id) = {id, event.key, event.signature()};
        }
        for (const auto& event : plan.post) {
            events.push_back({"e" + std::to_string(++last), event.key, event.signature()});
        }
        for (const auto& id : plan.remove) std::erase_if(events, [&](const Managed& e) { return e.id == id; });
    }
    std::map<std::string, std::string> idsByKey() const {
        std::map<std::string, std::string> ids;
        for (const auto& event : events) ids[event.key] = event.id;
        return ids;
    }
};

TEST(SyncPlan, LeavesNothingToDoAndKeepsRenamedEventsOverRandomHistories) {
    std::mt19937 random(20250304);
    const auto pick = [&](std::size_t n) { return random() % n; };
    const std::vector<std::string> titles{"Pain", "pain", "❗ Pain", "Lait", "Été 🎉", "ÉTÉ 🎉", "Banque", "TVA"};
    const Day today{2025, 3, 4};
    int renames = 0;
    for (int history = 0; history < 60; ++history) {
        Calendar calendar;
        for (int step = 0; step < 40; ++step) {
            std::string text;
            for (auto lines = pick(8); lines > 0; --lines)
                text += (pick(4) ? "- [ ] " : "- [x] ") + titles[pick(titles.size())] + " · " +
                        today.plusDays(static_cast<std::int64_t>(pick(3))).description() +
                        (pick(2) ? " 09:30\n" : "\n");
            const auto tasks = TaskFile::parse(text);
            Keys renamed;
            if (!tasks.empty() && pick(2)) {
                auto edit = TaskFile::rename(text, tasks[pick(tasks.size())].key, titles[pick(titles.size())]);
                if (edit) std::tie(text, renamed) = std::tie(edit->text, edit->keys);
            }
            const auto before = calendar.idsByKey();
            calendar.apply(planSync(calendar.events, TaskFile::parse(text), renamed, paris));
            EXPECT_EQ(inWords(planSync(calendar.events, TaskFile::parse(text), {}, paris)), std::vector<std::string>{});
            const auto after = calendar.idsByKey();
            for (const auto& [old, now] : renamed) {
                if (!before.contains(old) || (before.contains(now) && !renamed.contains(now))) continue;
                EXPECT_EQ(after.at(now), before.at(old)) << text;
                ++renames;
            }
        }
    }
    EXPECT_GT(renames, 300);
}

}
}
