#include "tests/CalendarSync/MirrorFixture.h"

namespace tacla::testing {
namespace {

const std::string before =
    "- [ ] Pain · 2025-03-04\n- [ ] Lait · 2025-03-05\n- [ ] TVA · 2025-03-06\n- [ ] Vélo · 2025-03-07\n";
const std::string after =
    "- [ ] Baguette · 2025-03-04\n- [x] Lait · 2025-03-05 14:30\n- [ ] Café · 2025-03-08\n- [ ] Thé · 2025-03-09\n";
const MirrorFixture::Keys renamed{{TaskFile::hash("pain"), TaskFile::hash("baguette")}};

std::string refusal(int status) { return "Google Agenda a répondu " + std::to_string(status) + " "; }
std::string transport(dravel::HttpError::Kind kind) { return dravel::HttpError(kind, "127.0.0.1").what(); }

Json status(int code, const Json& more = Json::object()) {
    Json fault = {{"kind", "status"}, {"status", code}};
    fault.update(more);
    return fault;
}

struct Fault {
    std::string name;
    Json order;
    std::string end;                          // how the disturbed pass ends, at its beginning; "" as if undisturbed
    std::map<std::string, std::string> but{}; // other ends, by method
};

using Kind = dravel::HttpError::Kind;
const std::string unreadable = refusal(200) + "liste d'événements illisible";

const std::vector<Fault> faults{
    {"time-out", {{"kind", "hang"}}, transport(Kind::timedOut)},
    {"time-out after it took effect", {{"kind", "hang"}, {"after", true}}, transport(Kind::timedOut)},
    {"reset", {{"kind", "reset"}}, transport(Kind::lost)},
    {"reset after it took effect", {{"kind", "reset"}, {"after", true}}, transport(Kind::lost)},
    {"cut body", {{"kind", "cut"}}, transport(Kind::lost)},
    {"401 once", status(401), ""},
    {"401 twice", status(401, {{"times", 2}}), refusal(401)},
    {"403 rate", status(403, {{"reason", "rateLimitExceeded"}}), refusal(403)},
    {"404", status(404), refusal(404), {{"GET", "+4 ~0 -0"}, {"DELETE", ""}}},
    {"409", status(409), refusal(409)},
    {"410", status(410), refusal(410), {{"DELETE", ""}}},
    {"412", status(412), refusal(412)},
    {"429", status(429), refusal(429)},
    {"429 with Retry-After", status(429, {{"headers", {{"Retry-After", "9"}}}}), refusal(429)},
    {"500", status(500), refusal(500)},
    {"500 after it took effect", status(500, {{"after", true}}), refusal(500)},
    {"redirect", status(302, {{"headers", {{"Location", "/elsewhere"}}}}), refusal(302)},
    {"not JSON", {{"kind", "text"}, {"body", "<html>"}}, "", {{"GET", unreadable}}},
    {"wrong JSON shape", {{"kind", "text"}, {"body", "[{}]"}}, "", {{"GET", unreadable}}},
};

// A calendar with events of ours, two of one key, and some that are the user's own.
struct Disturbed : ::testing::Test {
    static constexpr auto patience = std::chrono::milliseconds(1'000); // with a service that never answers
    MirrorFixture mirror;
    CalendarSync impatient = another();
    Json calendars, strangers;
    std::string id;
    std::vector<std::string> methods{"GET", "GET", "PATCH", "PATCH", "POST", "POST", "DELETE", "DELETE", "DELETE"};

    void SetUp() override {
        EXPECT_EQ(mirror.run(before), "+4 ~0 -0");
        id = mirror.preferences.calendarID().value();
        calendars = mirror.google.state("calendars");
        Json& events = calendars[id]["events"];
        Json twin = events.begin().value();
        twin["id"] = "twin";
        events["twin"] = twin;
        strangers = {
            {"own", {{"id", "own"}, {"status", "confirmed"}, {"summary", "Dentiste"}}},
            {"marked",
             {{"id", "marked"}, {"status", "confirmed"}, {"extendedProperties", {{"private", {{"tacla", "1"}}}}}}}};
        events.update(strangers);
        mirror.google.control({{"page_size", 4}});
        reset();
    }

    CalendarSync another() {
        return {mirror.auth,           mirror.preferences, mirror.endpoints.calendar,
                mirror.home / "locks", mirror.time,        {.silence = patience, .exchange = patience}};
    }

    void reset() {
        mirror.preferences.setCalendar(id, true);
        mirror.google.control({{"clear_log", true}, {"calendars", calendars}, {"faults", Json::array()}});
    }

    void expectStrangersUntouched() {
        const Json events = mirror.google.state("calendars")[id]["events"];
        for (const auto& [name, event] : strangers.items()) EXPECT_EQ(events[name], event);
    }

    // Our events by key, with and without their identifiers.
    std::pair<std::map<Json, Json>, std::map<Json, Json>> ours() {
        std::pair<std::map<Json, Json>, std::map<Json, Json>> result;
        const Json all = mirror.calendar();
        for (Json event : all["events"]) {
            if (strangers.contains(event["id"]) || event["status"] == "cancelled") continue;
            const Json key = event["extendedProperties"]["private"]["key"];
            result.first[key] = event["id"];
            event.erase("id");
            EXPECT_TRUE(result.second.emplace(key, event).second) << "twice: " << key;
        }
        return result;
    }
};

TEST_F(Disturbed, EndsAsItShouldAndTheNextPassHealsWhateverTheFaultAndItsPlace) {
    EXPECT_EQ(mirror.run(after, renamed), "+2 ~2 -3");
    mirror.requests();
    const auto [ids, undisturbed] = ours();
    for (const auto& [name, order, end, but] : faults) {
        for (std::size_t at = 1; at <= methods.size(); ++at) {
            const auto& method = methods[at - 1];
            SCOPED_TRACE(name + " at request " + std::to_string(at) + ", " + method);
            reset();
            mirror.disturb(order, at);
            const auto other = but.find(method);
            std::string expected = other == but.end() ? end : other->second;
            if (expected.empty()) expected = "+2 ~2 -3";
            auto& sync = order["kind"] == "hang" ? impatient : mirror.sync;
            EXPECT_EQ(mirror.run(sync, after, renamed).substr(0, expected.size()), expected);
            expectStrangersUntouched();

            mirror.calm();
            EXPECT_EQ(mirror.run(after, renamed)[0], '+');
            EXPECT_EQ(mirror.run(after), "+0 ~0 -0");
            expectStrangersUntouched();
            const auto [idsNow, healed] = ours();
            EXPECT_EQ(healed, undisturbed);
            for (const auto& kept : {TaskFile::hash("baguette"), TaskFile::hash("lait")}) {
                const bool replaced = mirror.preferences.calendarID() != id;
                EXPECT_TRUE(replaced || idsNow.at(kept) == ids.at(kept)) << kept;
            }
        }
    }
}

TEST_F(Disturbed, DeletesNothingForAnEmptyFile) {
    for (const auto& fault : faults) {
        SCOPED_TRACE(fault.name);
        for (const auto at : {1U, 2U}) {
            reset();
            mirror.disturb(fault.order, at);
            mirror.run(impatient, "", {});
            EXPECT_EQ(mirror.google.state("calendars")[id], calendars[id]);
        }
    }
}

TEST_F(Disturbed, CreatesACalendarAtTheNextPassWhenTheFirstFailed) {
    for (const auto& [name, order, end, but] : faults) {
        SCOPED_TRACE(name);
        mirror.google.control({{"calendars", Json::object()}});
        mirror.disturb(order, 1);
        std::filesystem::remove(mirror.home / "preferences.json");
        CalendarSync fresh = another();
        const std::string expected = name == "401 once" ? "+4 ~0 -0"
                                     : end.empty()      ? refusal(200) + "agenda créé sans identifiant"
                                                        : end;
        EXPECT_EQ(mirror.run(fresh, before, {}).substr(0, expected.size()), expected);
        mirror.calm();
        if (end.empty() ? name != "401 once" : end.find("a répondu") == end.npos) { // nobody said what became of it
            const auto made = mirror.google.state("calendars").size();
            for (int again = 0; again < 2; ++again)
                EXPECT_TRUE(mirror.run(fresh, before, {}).starts_with("La création de l'agenda a été interrompue"));
            EXPECT_EQ(mirror.google.state("calendars").size(), made);
            mirror.preferences.setCalendarSync(true); // the user has seen to it
        }
        EXPECT_EQ(mirror.run(fresh, before, {}), name == "401 once" ? "+0 ~0 -0" : "+4 ~0 -0");
        EXPECT_EQ(mirror.shown().size(), 4U);
    }
}

TEST_F(Disturbed, AsksNothingOfTheCalendarWithoutAnAccessToken) {
    for (const Json& fault : {Json{{"kind", "reset"}}, Json{{"kind", "cut"}}, Json{{"kind", "text"}, {"body", "{}"}},
                              status(401), status(500), status(400, {{"reason", "invalid_grant"}})}) {
        reset();
        mirror.disturb(fault, 1, "token");
        mirror.auth.invalidateAccessToken();
        EXPECT_NE(mirror.run(after, renamed)[0], '+') << fault;
        EXPECT_EQ(mirror.requests(), std::vector<std::string>{}) << fault;
    }
    EXPECT_EQ(mirror.run(after), "Pas connecté à Google") << "a grant that Google refused is forgotten";
}

}
}
