#include "Tacla/MainWindow/PageContents.h"
#include "DravelKit/DravelUI/Symbols.h"
#include "tests/MainWindow/ModelStates.h"

namespace tacla::testing {

using dravel::Symbol;

static std::string timeText(Instant instant) { return Clock::of(instant).description(); }

// One line a card: its title, its tasks, and how they stand there.
static std::string transcript(const TaskGroups& groups) {
    std::string text;
    for (const auto& group : groups) {
        text += group.title();
        for (const auto& task : group.tasks) text += " / " + task.title;
        if (group.tasks.empty()) text += " : " + group.empty;
        text += "\n";
    }
    return text;
}

TEST(TodayPage, SaysHowTheDayStands) {
    const std::pair<const char*, const char*> cases[] = {
        {"- [ ] Demain seulement · 2026-11-25\n- [ ] Sans date\n", "Journée libre (0 faite) 0/0"},
        {"- [ ] Pain · 2026-11-23\n- [ ] Vin · 2026-11-24\n", "2 tâches à cocher (0 faite · 1 en retard) 0/1"},
        {"- [x] Pain · 2026-11-24 · ✅ 2026-11-24\n", "Tout est coché 🎉 (1 faite) 1/1"},
        {"- [x] Pain · 2026-11-24\n- [x] Vin · 2026-11-24\n- [ ] Urssaf · 2026-11-18\n",
         "1 tâche à cocher (2 faites · 1 en retard) 2/2"},
        {"- [ ] Midi · 2026-11-24 12:00\n- [ ] Onze heures · 2026-11-24 11:00\n- [ ] Tôt · 2026-11-24 08:00\n"
         "- [x] Fait · 2026-11-24 10:50\n- [ ] Sans heure · 2026-11-24\n",
         "4 tâches à cocher (1 faite · 1 en retard · prochaine à 11:00) 1/4"},
        {"- [ ] À l'instant · 2026-11-24 10:40\n", "1 tâche à cocher (0 faite) 0/1"},
    };
    for (const auto& [file, said] : cases) {
        const auto contents = todayContents(stateOf(file));
        EXPECT_EQ(contents.overline, "Aujourd'hui · mardi 24 novembre");
        EXPECT_EQ(contents.headline + " (" + contents.detail + ") " + std::to_string(contents.done) + "/" +
                      std::to_string(contents.total),
                  said);
    }
}

TEST(TodayPage, ShowsLateTasksTodayAndTheNextFive) {
    EXPECT_EQ(transcript(todayContents(stateOf("- [ ] Sans date\n")).groups),
              "Au programme : Rien de prévu aujourd'hui.\n");

    const auto groups = todayContents(stateOf("- [ ] g · 2026-12-07\n- [ ] f · 2026-12-06\n- [ ] e · 2026-12-05\n"
                                              "- [ ] d · 2026-12-04\n- [ ] c · 2026-12-03\n- [ ] b · 2026-12-02\n"
                                              "- [ ] a · 2026-11-25\n- [ ] Midi · 2026-11-24 12:00\n"
                                              "- [ ] Urssaf · 2026-11-18\n- [ ] Huit heures · 2026-11-24 08:00\n"))
                            .groups;
    EXPECT_EQ(transcript(groups), "En retard / Urssaf / Huit heures\n"
                                  "Au programme / Midi\n"
                                  "Ensuite / a / b / c / d / e\n");
    EXPECT_TRUE(groups[0].showDay);
    EXPECT_FALSE(groups[1].showDay);
}

TEST(ListPages, GroupOpenTasks) {
    const auto listed = [](Section section, std::string_view file) {
        return transcript(listContents(section, stateOf(file)).groups);
    };
    EXPECT_EQ(listed(Section::late, "- [ ] Pain · 2026-11-24\n"), "");
    EXPECT_EQ(listed(Section::late, "- [ ] Pain · 2026-11-23\n- [ ] Vin · 2026-11-20\n"), "2 en retard / Vin / Pain\n");
    EXPECT_EQ(listed(Section::upcoming, "- [ ] Aujourd'hui · 2026-11-24\n- [x] Fait · 2026-11-30\n"), "");
    EXPECT_EQ(listed(Section::upcoming,
                     "- [ ] Frais · 2026-11-30 09:30\n- [ ] Un jour\n- [ ] Perrin · 2026-11-25\n"
                     "- [ ] Visio · 2026-11-25 08:00\n- [ ] Taxe · 2026-11-30\n- [ ] Année · 2027-01-01\n- [x] Fini\n"),
              "Demain · mercredi 25 novembre / Visio / Perrin\n"
              "Lundi 30 novembre / Taxe / Frais\n"
              "Vendredi 1 janvier / Année\n"
              "Sans date / Un jour\n");
}

TEST(DonePage, GroupsByTheDayOnWhichTasksWereDone) {
    const auto state = stateOf("- [x] Sans rien\n- [x] Colis · 2026-11-24 08:30 · ✅ 2026-11-24\n"
                               "- [x] Charte · 2026-11-23 11:00\n- [x] Plombier · 2026-11-23 · ✅ 2026-11-24\n"
                               "- [x] Encre · ✅ 2026-11-23\n- [x] Épreuves · 2026-11-19 · ✅ 2026-11-20\n"
                               "- [ ] À faire · 2026-11-24\n- [x] En avance · 2026-11-30\n");
    const auto groups = listContents(Section::done, state).groups;
    EXPECT_EQ(transcript(groups), "Lundi 30 novembre / En avance\n"
                                  "Aujourd'hui / Sans rien / Colis / Plombier\n"
                                  "Hier · lundi 23 novembre / Charte / Encre\n"
                                  "Vendredi 20 novembre / Épreuves\n");
    EXPECT_EQ(groups[1].role, ColourRole::success);
    EXPECT_EQ(groups[2].role, ColourRole::faint);
}

TEST(Problems, AreToldByWeight) {
    auto state = stateOf("");
    state.syncError = "la connexion à Internet semble interrompue";
    EXPECT_TRUE(problems(state).empty()) << "mirroring is off";
    state.calendarSync = true;
    state.fileError = "Impossible de lire /taches.md : Permission non accordée";
    EXPECT_EQ(problems(state),
              (std::vector<Problem>{{"Impossible de lire /taches.md : Permission non accordée", ColourRole::danger},
                                    {"Agenda : la connexion à Internet semble interrompue", ColourRole::warning}}));
}

TEST(SyncBadge, TellsTheWorstFirst) {
    auto state = stateOf("- [ ] Hier · 2026-11-23\n- [ ] Pain · 2026-11-24\n- [x] Fait · 2026-11-24\n"
                         "- [ ] Demain · 2026-11-25\n- [ ] Un jour\n");
    const auto badge = [&] {
        const auto content = syncBadge(state, timeText);
        EXPECT_EQ(content.title, "2 à faire") << "late or of today";
        EXPECT_EQ(content.syncing, content.symbol == Symbol::arrowRepeat);
        EXPECT_EQ(content.trouble && !content.syncing, content.symbol == Symbol::exclamationLg);
        return content.subtitle + (content.trouble ? " !" : "") + " / " + syncText(state, timeText);
    };
    state.connection = Connection::signedOut;
    state.syncError = "erreur";
    EXPECT_EQ(badge(), "taches.md / erreur") << "mirroring is off";
    state.calendarSync = true;
    EXPECT_EQ(badge(), "Agenda non connecté ! / erreur");
    state.connection = Connection::signedIn;
    EXPECT_EQ(badge(), "Synchro en échec ! / erreur");
    state.syncing = true;
    EXPECT_EQ(badge(), "Synchro en échec ! / erreur");
    state.syncError.reset();
    EXPECT_EQ(badge(), "Synchro de l'agenda… / En cours");
    state.syncing = false;
    EXPECT_EQ(badge(), "Agenda connecté / Pas encore faite");
    state.lastSync = stateOf("", "2026-11-24 14:05").now;
    EXPECT_EQ(badge(), "Agenda à jour · 14:05 / Dernière : 14:05, puis à chaque modification de la liste");
    for (const auto& [connection, text] :
         {std::pair{Connection::unknown, "Agenda…"}, {Connection::signingIn, "Connexion à Google…"}}) {
        state.connection = connection;
        EXPECT_EQ(syncBadge(state, timeText).subtitle, text);
    }
    state.fileError = "erreur";
    EXPECT_TRUE(badge().starts_with("Liste illisible !"));
    EXPECT_EQ(syncBadge(stateOf(""), timeText).title, "Tout est coché");
}

TEST(AccountText, TellsHowLongTheSignInWaits) {
    auto state = stateOf("");
    state.connection = Connection::signingIn;
    state.signIn = SignInWait{"https://accounts.google.com/?state=x", std::chrono::seconds(299)};
    EXPECT_EQ(accountText(state), "Répondez à Google dans votre navigateur : encore 4 min 59 s.");
    state.signIn->left = std::chrono::seconds(59);
    state.signIn->noBrowser = true;
    EXPECT_EQ(accountText(state),
              "Aucun navigateur ne s'est ouvert. Copiez l'adresse et ouvrez-la dans un navigateur : encore 59 s.");
}

}
