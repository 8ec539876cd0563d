#include "DravelKit/DravelUI/Symbols.h"
#include "Tacla/MainWindow/PageContents.h"
#include "Tacla/MainWindow/Rows/RowContents.h"
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

static constexpr Day today{2026, 11, 24};

static std::string transcript(const std::vector<TaskTag>& tags) {
    std::string text;
    for (const auto& tag : tags)
        text += (text.empty() ? "" : ", ") + tag.text + (tag.role == ColourRole::plain ? "" : "!");
    return text;
}

TEST(TaskTags, StandInOrder) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        // with the day, without it
        {"- [ ] Pain", "", ""},
        {"- [ ] Pain · 2026-11-24", "aujourd'hui", ""},
        {"- [ ] Pain · 2026-11-25 09:30", "demain, 09:30", "09:30"},
        {"- [ ] Pain · 2026-12-01", "01/12", ""},
        {"- [ ] ❗ Pain · 2026-11-20 14:00 · due 2026-11-12", "20/11, 14:00, Prioritaire!, due le 12/11!",
         "14:00, Prioritaire!, due le 12/11!"},
        {"- [x] ❗ Pain · 2026-11-20 · due 2026-11-12", "20/11", ""},
        {"- [x] Pain · 2026-11-23 · ✅ 2026-11-24", "23/11, faite le 24/11!", "faite le 24/11!"},
        {"- [x] Pain · 2026-11-24 · ✅ 2026-11-24", "aujourd'hui", ""},
        {"- [x] Pain · ✅ 2026-11-23", "faite le 23/11!", "faite le 23/11!"},
    };
    for (const auto& [line, withDay, withoutDay] : cases) {
        SCOPED_TRACE(line);
        EXPECT_EQ(transcript(taskTags(taskOf(line), today, true)), withDay);
        EXPECT_EQ(transcript(taskTags(taskOf(line), today, false)), withoutDay);
        const auto brief = TaskList(line).brief(0);
        EXPECT_EQ(hasTags(brief, true), *withDay != '\0');
        EXPECT_EQ(hasTags(brief, false), *withoutDay != '\0');
    }
}

TEST(RowMenu, PostponesOpenTasksFromTodayAndByAWeekFromTheirOwnDay) {
    const auto dated = taskOf("- [ ] Pain · 2026-11-03");
    EXPECT_EQ(postponedDay(RowCommand::postponeToTomorrow, dated, today), (Day{2026, 11, 25}));
    EXPECT_EQ(postponedDay(RowCommand::postponeToMonday, dated, today), (Day{2026, 11, 30}));
    EXPECT_EQ(postponedDay(RowCommand::postponeByAWeek, dated, today), (Day{2026, 11, 10}));
    EXPECT_EQ(postponedDay(RowCommand::postponeByAWeek, taskOf("- [ ] Pain"), today), (Day{2026, 12, 1}));
    EXPECT_EQ(postponedDay(RowCommand::postponeByAWeek, taskOf("- [ ] Pain · 9999-12-28"), today), (Day{9999, 12, 31}));
    for (const auto& entry : rowMenu(taskOf("- [x] Pain"))) {
        EXPECT_EQ(postponedDay(entry.command, dated, today), std::nullopt) << entry.label;
        EXPECT_FALSE(entry.separatorBefore) << entry.label;
    }
}

TEST(TaskEditor, OpensOnTheTaskWithTenOClockForOneWithoutATime) {
    EXPECT_EQ(draftOf(taskOf("- [ ] ❗ Pain · 2026-11-26 18:00"), today),
              (TaskDraft{"Pain", {2026, 11, 26}, true, {18, 0}, true}));
    EXPECT_EQ(draftOf(taskOf("- [ ] Pain"), today), (TaskDraft{"Pain", today, false, {10, 0}, false}));
    EXPECT_EQ(draftOf(taskOf("- [ ] Pain · 2026-02-30"), today).day, (Day{2026, 3, 2}));
}

TEST(TaskEditor, AsksForWhatWasTouchedAndKeepsATaskWithoutADayUndated) {
    struct Case {
        const char *what, *line;
        Day day;
        bool hasTime;
        Day savedOn;
        TaskChange expected;
    };
    const Day tomorrow{2026, 11, 25}, friday{2026, 11, 20};
    const std::optional<Clock> none;
    const Case cases[] = {
        {"untouched", "- [ ] Pain", today, false, today, {}},
        {"untouched over midnight", "- [ ] Pain", today, false, tomorrow, {}},
        {"another day", "- [ ] Pain", tomorrow, false, today, {.day = tomorrow}},
        {"a time", "- [ ] Pain", today, true, today, {.day = today, .time = Clock{10, 0}}},
        {"dated, untouched", "- [ ] Pain · 2026-11-24", today, false, today, {}},
        {"dated, to the day of its saving", "- [ ] Pain · 2026-11-20", today, false, today, {.day = today}},
        {"its time taken away", "- [ ] Pain · 2026-11-20 18:00", friday, false, today, {.time = none}},
    };
    for (const auto& [what, line, day, hasTime, savedOn, expected] : cases) {
        SCOPED_TRACE(what);
        const auto opened = draftOf(taskOf(line), today);
        auto draft = opened;
        draft.day = day;
        draft.hasTime = hasTime;
        EXPECT_EQ(changeOf(draft, opened, savedOn), expected);
        draft.title = "Vin";
        EXPECT_EQ(changeOf(draft, opened, savedOn).title, "Vin");
    }
}

}
