#include "Tacla/MainWindow/PageContents.h"

#include "DravelKit/DravelUI/Symbols.h"
#include "tests/MainWindow/ModelStates.h"

#include <gtest/gtest.h>

namespace tacla {
namespace {

using dravel::Symbol;
using testing::moment;
using testing::stateOf;

std::string timeText(Instant instant) { return Clock::of(instant).description(); }

TEST(SyncBadge, TellsTheWorstFirst) {
    struct Case {
        const char* what;
        std::function<void(ModelState&)> change; // from: mirroring on, signed in, nothing synced yet
        SyncBadgeContent expected;
    };
    const std::string title = "Tout est coché";
    const Case cases[] = {
        {"fresh", [](auto&) {}, {Symbol::CheckLg, title, "Agenda connecté"}},
        {"synced",
         [](auto& state) { state.lastSync = moment("2026-11-24 14:05"); },
         {Symbol::CheckLg, title, "Agenda à jour · 14:05"}},
        {"syncing",
         [](auto& state) { state.syncing = true; },
         {Symbol::ArrowRepeat, title, "Synchro de l'agenda…", true}},
        {"failed",
         [](auto& state) { state.syncError = "erreur"; },
         {Symbol::ExclamationLg, title, "Synchro en échec", false, true}},
        {"trying again",
         [](auto& state) {
             state.syncError = "erreur";
             state.syncing = true;
         },
         {Symbol::ArrowRepeat, title, "Synchro en échec", true, true}},
        {"unknown", [](auto& state) { state.connection = Connection::unknown; }, {Symbol::CheckLg, title, "Agenda…"}},
        {"signing in",
         [](auto& state) { state.connection = Connection::signingIn; },
         {Symbol::CheckLg, title, "Connexion à Google…"}},
        {"signed out",
         [](auto& state) { state.connection = Connection::signedOut; },
         {Symbol::ExclamationLg, title, "Agenda non connecté", false, true}},
        {"mirroring off",
         [](auto& state) {
             state.calendarSync = false;
             state.syncError = "erreur";
             state.connection = Connection::signedOut;
         },
         {Symbol::CheckLg, title, "taches.md"}},
        {"unreadable file",
         [](auto& state) {
             state.calendarSync = false;
             state.fileError = "erreur";
         },
         {Symbol::ExclamationLg, title, "Liste illisible", false, true}},
    };
    for (const auto& [what, change, expected] : cases) {
        SCOPED_TRACE(what);
        auto state = stateOf("");
        state.calendarSync = true;
        state.connection = Connection::signedIn;
        change(state);
        EXPECT_EQ(syncBadge(state, timeText), expected);
    }
}

TEST(SyncBadge, CountsWhatIsLateAndWhatIsLeftToday) {
    EXPECT_EQ(syncBadge(stateOf("- [ ] Hier · 2026-11-23\n- [ ] Pain · 2026-11-24\n- [x] Fait · 2026-11-24\n"
                                "- [ ] Demain · 2026-11-25\n- [ ] Un jour\n"),
                        timeText)
                  .title,
              "2 à faire");
}

TEST(SettingsPage, TellsTheLastSync) {
    auto state = stateOf("");
    EXPECT_EQ(syncText(state, timeText), "Pas encore faite");
    state.lastSync = moment("2026-11-24 09:30");
    EXPECT_EQ(syncText(state, timeText), "Dernière : 09:30, puis à chaque modification de la liste");
    state.syncing = true;
    EXPECT_EQ(syncText(state, timeText), "En cours");
    state.syncError = "l'agenda ne répond pas";
    EXPECT_EQ(syncText(state, timeText), "l'agenda ne répond pas");
}

}
}
