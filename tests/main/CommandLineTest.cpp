#include "Tacla/main/CommandLine.h"
#include "DravelKit/Foundation/Text.h"
#include "DravelKit/Foundation/WallCalendar.h"
#include "Tacla/TaskList/TaskFile.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace tacla;
using namespace tacla::testing;
using namespace std::string_literals;

namespace {

// A user with a task file, at noon of 6 March 2025.
struct User {
    TemporaryFolder home;
    std::filesystem::path file = home / "taches.md";
    Preferences preferences{home / "preferences.json", home / "locks"};
    std::vector<std::string> programs; // what was started: the file, its arguments and its input

    explicit User(std::string_view text = "") { writeBytes(file, text); }

    // What a terminal shows, and the exit status. The arguments are parted by "|".
    std::string types(std::string_view line) {
        Terminal terminal;
        const auto run = [&](const Program& program, Arguments all, std::string_view input) {
            programs.push_back(program.file);
            for (const auto& argument : all) programs.back() += " " + argument;
            programs.back() += input;
            return 7;
        };
        const auto become = [&](const Program& program, Arguments all) { return run(program, all, ""); };
        std::vector<std::string> arguments;
        for (const auto argument : dravel::split(line, "|", !line.empty())) arguments.emplace_back(argument);
        dravel::UserFolders folders;
        folders.state = home / "state";
        folders.locks = home / "locks";
        const auto noon = dravel::wall::instant({2025, 3, 6, 12, 0});
        const int status =
            runCommandLine(arguments, terminal, {file.string(), folders, preferences, noon, become, run});
        return terminal.output + terminal.errors + std::to_string(status);
    }
    std::string text() const { return readBytes(file); }
};

}

TEST(CommandLine, ChoosesByTheArgumentsAlone) {
    User user;
    for (const auto* wrong : {"LIST", "|list", "done", "rename", "rename|a", "rename|a|b|c", "--snapshot", "--help"})
        EXPECT_EQ(user.types(wrong),
                  "tacla : usage : tacla [list | done <texte> | rename <texte> <nouveau titre> | sync]\n1");
    EXPECT_EQ(user.types("list|extra|words"), "0");
    EXPECT_TRUE(user.programs.empty());
    for (const auto* desktop : {"", "--notify-test", "--snapshot|a.png|--dark"}) EXPECT_EQ(user.types(desktop), "7");
    EXPECT_EQ(user.programs, (std::vector{"tacla-desktop"s, "tacla-desktop --notify-test"s,
                                          "tacla-desktop --snapshot a.png --dark"s}));
}

TEST(CommandLine, ListsOpenTasksUpToToday) {
    User user("# Tâches\n"
              "- [ ] ❗ Appeler la banque · 2025-03-06 17:00\n"
              "- [ ] Déclarer la TVA · 2025-3-6 · due 2025-03-03\n"
              "- [ ] Déjà passé · 2025-03-06 11:59\n"
              "- [ ] À l'instant · 2025-03-06 12:00\n"
              "- [ ] Hier soir · 2025-03-05 23:00 · due 2025-03-01\n"
              "- [ ] Demain · 2025-03-07\n"
              "- [ ] Sans date\n"
              "- [x] Faite · 2025-03-05 · ✅ 2025-03-05\n"
              "Pas une tâche · 2025-03-05\n");
    EXPECT_EQ(user.types("list"), "🟡 ❗ Appeler la banque · 2025-03-06 17:00\n"
                                  "🟡 Déclarer la TVA · 2025-03-06 (due le 2025-03-03)\n"
                                  "🔴 Déjà passé · 2025-03-06 11:59\n"
                                  "🟡 À l'instant · 2025-03-06 12:00\n"
                                  "🔴 Hier soir · 2025-03-05 23:00 (due le 2025-03-01)\n"
                                  "0");
}

TEST(CommandLine, ChecksTheFirstOpenMatch) {
    User user("- [x] Pain d'hier\n- [ ] Acheter du pain\n- [ ] Pain\r\n- [ ] ❗ Été · 2025-03-06");
    EXPECT_EQ(user.types("done|PAIN"), "✅ Acheter du pain\n0");
    EXPECT_EQ(user.types("done|pain"), "✅ Pain\n0");
    for (const auto& [typed, sought] :
         {std::pair{"pain", "pain"}, {"ete", "ete"}, {"DU|Pain", "du pain"}, {"", ""}, {"\xC3", "\xC3"}})
        EXPECT_EQ(user.types("done|"s + typed), "tacla : aucune tâche ouverte ne contient « "s + sought + " »\n1");
    EXPECT_EQ(user.types("done|❗|ÉTÉ"), "✅ ❗ Été\n0");
    EXPECT_EQ(user.text(), "- [x] Pain d'hier\n- [x] Acheter du pain · ✅ 2025-03-06\n- [x] Pain\r · ✅ 2025-03-06\n"
                           "- [x] ❗ Été · 2025-03-06 · ✅ 2025-03-06");
}

TEST(CommandLine, RenamesTheOnlyMatch) {
    const std::string text = "- [ ] ❗ Pain · 2025-03-06\n- [x] Acheter du lait\n- [ ] Laitue\n";
    // What is sought, the new title, what is shown, and the first line afterwards; "" when nothing changes.
    const std::tuple<const char*, const char*, const char*, std::string> cases[] = {
        {"pain", "Pain complet", "✏️ ❗ Pain → Pain complet\n0", "- [ ] ❗ Pain complet · 2025-03-06"},
        {"PAIN", "❗ A · · B", "✏️ ❗ Pain → A - - B\n0", "- [ ] ❗ A - - B · 2025-03-06"},
        {"lait", "Beurre", "tacla : plusieurs tâches contiennent « lait »\n1", ""},
        {"Œuf", "Beurre", "tacla : aucune tâche ne contient « œuf »\n1", ""},
        {"", "Beurre", "tacla : aucune tâche ne contient «  »\n1", ""},
        {"pain", "Pain", "tacla : impossible de renommer dans FILE\n1", ""},
        {"pain", "❗ ", "tacla : impossible de renommer dans FILE\n1", ""},
        {"pain", "A\r\n B\u2028C\u0085\fD\n", "✏️ ❗ Pain → A  B C D\n0", "- [ ] ❗ A  B C D · 2025-03-06"},
        {"pain", "Caf\xE9", "tacla : impossible de renommer dans FILE\n1", ""},
    };
    for (const auto& [search, title, shown, line] : cases) {
        User user(text);
        EXPECT_EQ(user.types("rename|"s + search + "|" + title),
                  dravel::replacedAll(shown, "FILE", user.file.string()));
        EXPECT_EQ(user.text(), line.empty() ? text : line + text.substr(text.find('\n')));
    }
}

TEST(CommandLine, CarriesARenameToRemindersAndCalendar) {
    User user("- [ ] Pain · 2025-03-06\n- [x] Lait\n");
    const auto bread = TaskFile::hash("pain"), butter = TaskFile::hash("beurre");
    user.preferences.updateNotifiedTasks([&](auto) { return std::vector{bread + "@2025-03-06", "x@2025-03-06"s}; });
    user.preferences.setCalendarSync(true);
    EXPECT_EQ(user.types("rename|pain|Beurre"), "✏️ Pain → Beurre\n7");
    EXPECT_EQ(user.preferences.notifiedTasks(), (std::vector{butter + "@2025-03-06", "x@2025-03-06"s}));
    EXPECT_EQ(user.types("sync"), "7");
    EXPECT_EQ(user.programs,
              (std::vector{"tacla-sync --renamed-keys{\"" + bread + "\":\"" + butter + "\"}", "tacla-sync"s}));

    user.preferences.setCalendarSync(false);
    EXPECT_EQ(user.types("sync"), "tacla : la recopie dans Google Agenda est désactivée (Réglages de Tacla)\n1");
    EXPECT_EQ(user.types("rename|lait|Miel"), "✏️ Lait → Miel\n0");
    EXPECT_EQ(user.programs.size(), 2U);
}

TEST(CommandLine, NamesTheFileThatItCannotReadOrWrite) {
    User user("- [ ] Caf\xE9\n");
    const auto unreadable = "tacla : " + user.file.string() + " illisible\n1";
    const auto check = [&] {
        for (const auto* command : {"list", "done|a", "rename|a|b"}) EXPECT_EQ(user.types(command), unreadable);
    };
    check();
    std::filesystem::remove(user.file);
    check();
    std::filesystem::create_directory(user.file);
    check();

    User blocked("- [ ] Pain\n");
    const std::ofstream writer(blocked.file, std::ios::app);
    EXPECT_EQ(blocked.types("done|pain"), "tacla : impossible d'écrire " + blocked.file.string() + "\n1");
    EXPECT_EQ(blocked.types("rename|pain|Lait"),
              "tacla : impossible de renommer dans " + blocked.file.string() + "\n1");
    EXPECT_EQ(blocked.text(), "- [ ] Pain\n");
}
