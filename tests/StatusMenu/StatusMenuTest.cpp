#include "Tacla/StatusMenu/StatusMenu.h"

#include "tests/MainWindow/ModelStates.h"

namespace tacla::testing {

// The menu as a reader sees it: "[ ]" and "[x]" can be checked, "#" heads a group, "(…)" is greyed, "^O" is a shortcut.
static std::string shown(const Menu& menu, const std::string& indent = "") {
    std::string text;
    for (const auto& entry : menu) {
        text += indent;
        if (entry.kind == MenuEntry::Kind::separator) text += "--";
        if (entry.kind == MenuEntry::Kind::header) text += "# ";
        if (entry.checked) text += *entry.checked ? "[x] " : "[ ] ";
        text += entry.enabled ? entry.label : "(" + entry.label + ")";
        if (entry.shortcut) text += std::string(" ^") + *entry.shortcut;
        text += "\n" + shown(entry.children, indent + "    ");
    }
    return text;
}

// It is Tuesday 24 November 2026, 10:40.
TEST(StatusMenu, ListsWhatIsLateWhatIsForTodayAndWhatIsComing) {
    const auto state = stateOf("- [ ] Visio · 2026-11-25 09:05\n"
                               "- [ ] ❗ Urssaf · 2026-11-18\n"
                               "- [ ] Relancer R&D · 2026-11-23 14:00\n"
                               "- [ ] Épreuves · 2026-11-24 08:00\n"
                               "- [ ] Poster note_1 · 2026-11-24 11:30\n"
                               "- [x] Papier · 2026-11-24 08:30 · ✅ 2026-11-24\n"
                               "- [ ] Loyer · 2026-12-04\n"
                               "- [ ] Visuels · 2026-11-26 18:00\n"
                               "- [ ] Un jour\n"
                               "- [x] Faite · 2026-11-20 · ✅ 2026-11-20\n");
    EXPECT_EQ(shown(statusMenu(state, false)), "# En retard\n"
                                               "[ ] 18/11  ❗ Urssaf\n"
                                               "[ ] 23/11  Relancer R&D\n"
                                               "[ ] 08:00  Épreuves\n"
                                               "--\n"
                                               "# Aujourd'hui\n"
                                               "[x] 08:30  Papier\n"
                                               "[ ] 11:30  Poster note_1\n"
                                               "--\n"
                                               "À venir\n"
                                               "    [ ] demain 09:05  Visio\n"
                                               "    [ ] 26/11 18:00  Visuels\n"
                                               "    [ ] 04/12  Loyer\n"
                                               "--\n"
                                               "Ouvrir Tacla… ^o\n"
                                               "Ouvrir la liste\n"
                                               "--\n"
                                               "Quitter Tacla ^q\n");
}

TEST(StatusMenu, OffersWhatThereIsWhereNothingIsPlanned) {
    auto state = stateOf("- [ ] Un jour\n- [x] Faite · 2026-11-20\n");
    state.calendarSync = true;
    EXPECT_EQ(shown(statusMenu(state, true)), "# Aujourd'hui\n(Rien de prévu)\n--\nOuvrir Tacla… ^o\nOuvrir la liste\n"
                                              "Ouvrir l'agenda\n--\nRechercher des mises à jour…\nQuitter Tacla ^q\n");
}

TEST(StatusMenu, ShowsFifteenComingTasksAndEveryLateOne) {
    std::string file;
    for (int i = 0; i < 20; ++i) file += "- [ ] Plus tard " + std::to_string(i) + " · 2026-12-01\n";
    for (int i = 0; i < 200; ++i) file += "- [ ] En retard " + std::to_string(i) + " · 2026-11-01\n";
    const auto menu = statusMenu(stateOf(file), false);
    EXPECT_EQ(menu.at(200).label, "01/11  En retard 199");
    const auto& coming = menu.at(205);
    ASSERT_EQ(coming.label, "À venir");
    ASSERT_EQ(coming.children.size(), 15U);
    EXPECT_EQ(coming.children.back().label, "01/12  Plus tard 14");
}

TEST(DesktopSearch, FindsOpenTasksByTheirWordsAndSaysWhenTheyAre) {
    std::string file =
        "- [ ] Appeler le garage · 2026-11-25 14:30\n- [ ] Garage à ranger · 2026-11-24\n"
        "- [ ] Appeler Zoé, garage\n- [x] Payer le garage · 2026-11-24\n- [ ] Le garage · 2026-12-04 09:00\n";
    const auto found = [&](std::string_view typed) {
        std::string text;
        for (const auto& entry : searchEntries(stateOf(file), typed)) text += entry.title + " | " + entry.when + "\n";
        return text;
    };
    EXPECT_EQ(found("GARAGE"),
              "Appeler le garage | demain 14:30\nGarage à ranger | aujourd'hui\nAppeler Zoé, garage | \n"
              "Le garage | 04/12 09:00\n");
    EXPECT_EQ(found("zoe appel"), "Appeler Zoé, garage | \n");
    EXPECT_EQ(found(""), "");
    for (int i = 0; i < 20; ++i) file += "- [ ] Garage " + std::to_string(i) + "\n";
    EXPECT_EQ(searchEntries(stateOf(file), "garage").size(), 10U);
}

TEST(StatusMenu, CutsALongLabelAndNamesTheTaskAsItIs) {
    const std::string title(70, 'x');
    const auto entry = [](const std::string& task) { return statusMenu(stateOf("- [ ] " + task), false).at(1); };
    EXPECT_EQ(entry(title + " · 2026-11-24").label, std::string(63, 'x') + "…");
    EXPECT_EQ(entry(title + " · 2026-11-24").toolTip, title);
    EXPECT_EQ(entry(title.substr(0, 57) + " · 2026-11-24 11:30").label, "11:30  " + title.substr(0, 57)); // 64

    const auto twins = stateOf("- [ ] Pain · 2026-11-24\n- [ ] pain · 2026-11-24\n");
    for (const std::size_t i : {0U, 1U})
        EXPECT_EQ(statusMenu(twins, false).at(i + 1).command,
                  (MenuCommand{MenuCommand::Kind::toggle, twins.tasks.at(i)}));
}

TEST(StatusMenu, SaysOverTheIconWhatIsWrongWithTheList) {
    auto state = stateOf("- [ ] Pain · 2026-11-24\n");
    EXPECT_EQ(statusToolTip(state), "Tacla · 1 à faire");
    state.fileError = "Impossible d'écrire /t.md : Permission non accordée";
    EXPECT_EQ(statusToolTip(state), "Tacla · Impossible d'écrire /t.md : Permission non accordée");
}

}
