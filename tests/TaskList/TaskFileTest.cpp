#include "Tacla/TaskList/TaskFile.h"

#include <gtest/gtest.h>

using namespace tacla;

namespace {

// A task as one line of a transcript.
std::string told(const TaskItem& task) {
    std::string text = std::to_string(task.line) + (task.done ? " [x] " : " [ ] ") + task.title;
    if (task.day) text += " | " + task.when();
    if (task.due) text += " | due " + task.due->description();
    if (task.doneOn) text += " | done " + task.doneOn->description();
    return text;
}

std::vector<std::string> told(std::string_view text) {
    std::vector<std::string> lines;
    for (const auto& task : TaskFile::parse(text)) lines.push_back(told(task));
    return lines;
}

using Lines = std::vector<std::string>;

}

TEST(TaskFile, ReadsTheTasksOfADocumentAndNothingElse) {
    EXPECT_EQ(told("# Tâches\n"
                   "\n"
                   "`- [ ] Titre · AAAA-MM-JJ HH:MM`\n"
                   "- [ ] Appeler le garage · 2025-03-04 14:30 · ✅ 2025-03-04\n"
                   "  - [x] Payer · 2025-03-01 · ✅ 2025-03-02\n"
                   "\t- [X] ❗ TVA · due 2025-03-01 · 2025-03-03 9:05\n"
                   "-[ ] Non\n- [ ]Non\n* [ ] Non\n- [] Non\n- [y] Non\n- [ ] \n- [ ]  · 2025-01-01\n"
                   "- [ ] Dernière"),
              (Lines{"3 [ ] Appeler le garage | 2025-03-04 14:30 | done 2025-03-04",
                     "4 [x] Payer | 2025-03-01 | done 2025-03-02", "5 [x] ❗ TVA | 2025-03-03 09:05 | due 2025-03-01",
                     "13 [ ] Dernière"}));
    EXPECT_TRUE(TaskFile::parse("").empty());
    EXPECT_TRUE(TaskFile::parse(TaskFile::newFileText).empty());
    EXPECT_EQ(TaskFile::newFileText.size(), 173U);
}

TEST(TaskFile, ReadsAttributesByTheirShape) {
    const std::pair<const char*, const char*> cases[] = {
        {"A · 2025-03-04 9:05", "A | 2025-03-04 09:05"},
        {"A · 2025-03-04 :9:05", "A | 2025-03-04 09:05"}, // as long as the usual notation
        {"A · 2025-03-04 09:05 demain", "A"},
        {"A · 2025-03-04T09:05", "A"},
        {"A ·   2025-03-04   09:05 ", "A | 2025-03-04 09:05"},
        {"A · 2025-03-04 10:00 · 2025-03-09", "A | 2025-03-09"}, // the last one wins, and clears the time
        {"A ·  · 2025-03-04", "A | 2025-03-04"},
        {"A · ✅ 2025-03-04 · ✅ jamais", "A"}, // also when it does not read
        {"A · ✅2025-03-04", "A | done 2025-03-04"},
        {"A · \t✅ \u00A02025-03-04 ·  due 2025-03-01 ", "A | due 2025-03-01 | done 2025-03-04"},
        {"A · due 2025-03-01 · due demain", "A | due 2025-03-01"},
        {"A · Due 2025-03-01 · due  2025-03-01", "A"},
        {"A\t· 2025-03-04", "A\t· 2025-03-04"},
        {" A  \r", "A"},
        {"A · 2025-03-04\r", "A"}, // the carriage return stays in the part
        {"A\u2028 · 2025-03-04", "A | 2025-03-04"},
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(told(std::string("- [ ] ") + line), Lines{std::string("0 [ ] ") + expected}) << line;
}

TEST(TaskFile, GivesEachTaskTheKeyOfItsTitle) {
    const auto tasks = TaskFile::parse("- [ ] Pain\n- [x] ❗ pain\n- [ ] ❗❗PAIN\n- [ ] pain#2\n- [ ] ❗\uFE0F Pain");
    ASSERT_EQ(tasks.size(), 5U);
    EXPECT_EQ(tasks[0].key, TaskFile::hash("pain"));
    EXPECT_EQ(tasks[1].key, TaskFile::hash("pain#2"));
    EXPECT_EQ(tasks[2].key, TaskFile::hash("pain#3"));
    EXPECT_EQ(tasks[3].key, TaskFile::hash("pain#2"));
    EXPECT_EQ(tasks[4].key, TaskFile::hash("\uFE0F pain"));
    EXPECT_EQ(TaskFile::hash("abc"), "ba7816bf8f01cfea"); // FIPS 180-4
    EXPECT_TRUE(tasks[4].strong());
    EXPECT_EQ(TaskFile::dropStrongMark("❗ ❗ Banque "), "❗ Banque");
}
