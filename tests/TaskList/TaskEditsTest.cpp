#include "Tacla/TaskList/TaskFile.h"

#include <gtest/gtest.h>

using namespace tacla;

namespace {

constexpr Day today{2025, 3, 5};
const std::string nothing = "(nothing)";

// The key of the n-th task of a text.
std::string key(std::string_view text, std::size_t n = 0) { return TaskFile::parse(text).at(n).key; }

std::string checked(std::string_view text, bool done = true) {
    return TaskFile::setDone(text, key(text), done, today).value_or(nothing);
}
std::string renamed(std::string_view text, std::string_view title) {
    const auto result = TaskFile::rename(text, key(text), title);
    return result ? result->text : nothing;
}
std::string moved(std::string_view text, Day to, std::optional<Clock> time = {}) {
    return TaskFile::reschedule(text, key(text), to, time, today).value_or(nothing);
}

}

TEST(Check, MarksTheLineAndKeepsEverythingElse) {
    EXPECT_EQ(checked("- [ ] Payer le loyer · 2025-03-01"), "- [x] Payer le loyer · 2025-03-01 · ✅ 2025-03-05");
    EXPECT_EQ(checked("# T\n\n  - [ ] ❗ Banque\r\nfin"), "# T\n\n  - [x] ❗ Banque\r · ✅ 2025-03-05\nfin");
    EXPECT_EQ(checked("- [x] A"), nothing);
    EXPECT_EQ(checked("  - [x] ❗ Banque · ✅ 2025-03-04", false), "  - [ ] ❗ Banque");
    EXPECT_EQ(checked("- [X] A · ✅ 2025-03-01 · 2025-03-02 · ✅ 2025-03-03", false), "- [ ] A · 2025-03-02");
    EXPECT_EQ(checked("- [x] A ·  x · due 2025-01-01 ·  ✅", false), "- [ ] A ·  x · due 2025-01-01");
    EXPECT_EQ(TaskFile::setDone("- [ ] A", "0123456789abcdef", true, today), std::nullopt);
}

TEST(Rename, ReplacesTheTitleAloneAndKeepsTheMark) {
    EXPECT_EQ(renamed("- [x] ❗ Vieux titre · 2025-03-04 · ✅ 2025-03-04", "Nouveau"),
              "- [x] ❗ Nouveau · 2025-03-04 · ✅ 2025-03-04");
    EXPECT_EQ(renamed("a\n \t- [ ]   Vieux  \nb", "Nouveau"), "a\n \t- [ ] Nouveau\nb");
    EXPECT_EQ(renamed("- [ ] ❗ Pain", "Pain"), nothing);
    EXPECT_EQ(renamed("- [ ] Pain", "pain"), "- [ ] pain");
    EXPECT_EQ(renamed("- [ ] Pain", "Pain\nLait"), nothing);
    EXPECT_EQ(TaskFile::rename("- [ ] A", "0123456789abcdef", "B"), std::nullopt);
}

TEST(Rename, TellsWhichKeysMoved) {
    const std::string text = "- [ ] Pain\n- [ ] Lait\n- [ ] pain\n";
    const auto result = TaskFile::rename(text, key(text), "Baguette");
    ASSERT_TRUE(result);
    using Map = std::map<std::string, std::string>;
    EXPECT_EQ(result->keys, (Map{{TaskFile::hash("pain"), TaskFile::hash("baguette")},
                                 {TaskFile::hash("pain#2"), TaskFile::hash("pain")}}));
    EXPECT_EQ(TaskFile::rename(text, key(text), "")->keys, (Map{{TaskFile::hash("pain#2"), TaskFile::hash("pain")}}));
    const auto a = "- [ ] A", ab = "- [ ] A\n- [ ] B", b = "\n- [ ] B", twice = "- [ ] A\n- [ ] a";
    const std::pair<const char*, const char*> without[] = {
        {ab, ab}, {ab, b}, {b, ab}, {a, ab}, {twice, "- [ ] A\n- [ ] a#2"}};
    for (const auto& [from, to] : without) EXPECT_EQ(TaskFile::renamedKeys(from, to), Map{}) << from << " -> " << to;
}

TEST(Reschedule, ReplacesTheDateAndRemembersWhenALateTaskWasFirstDue) {
    EXPECT_EQ(moved("- [ ] Déclarer la TVA · 2025-03-03 09:00", {2025, 3, 6}),
              "- [ ] Déclarer la TVA · 2025-03-06 · due 2025-03-03");
    EXPECT_EQ(moved("- [ ] A · lieu: bureau · 2025-03-01 · 2025-03-02 14:00", {2025, 3, 10}, Clock{14, 30}),
              "- [ ] A · lieu: bureau · 2025-03-10 14:30 · due 2025-03-02");
    EXPECT_EQ(moved("- [ ] A", {2025, 3, 10}), "- [ ] A · 2025-03-10");
    EXPECT_EQ(moved("- [ ] A · 2025-03-05 ·  b ", {2025, 3, 10}), "- [ ] A · 2025-03-10 ·  b ");
    EXPECT_EQ(moved("- [ ] A · 2025-03-03 · due 2025-03-01", {2025, 3, 10}), "- [ ] A · 2025-03-10 · due 2025-03-01");
    EXPECT_EQ(moved("- [ ] A · 2025-03-03", {2025, 3, 3}, Clock{8, 0}), "- [ ] A · 2025-03-03 08:00");
    EXPECT_EQ(moved("- [ ] A · 2025-03-04\r", {2025, 3, 10}), "- [ ] A · 2025-03-04\r · 2025-03-10");
}

TEST(Add, FindsItsPlaceInTheDocument) {
    const auto added = [](std::string_view text) { return TaskFile::add(text, "Pain", today, {}, false); };
    const std::string line = "- [ ] Pain · 2025-03-05";
    EXPECT_EQ(added(TaskFile::newFileText), std::string(TaskFile::newFileText) + line + "\n");
    EXPECT_EQ(added("## À faire\n- [ ] A\nprose\n \n\n# Fin\n- [ ] Z"),
              "## À faire\n- [ ] A\nprose\n" + line + "\n \n\n# Fin\n- [ ] Z");
    EXPECT_EQ(added(" ## À faire\t\n\n\n"), " ## À faire\t\n" + line + "\n\n\n");
    EXPECT_EQ(added("## À faire"), "## À faire\n" + line);
    EXPECT_EQ(added("## À faire\n# Fin"), "## À faire\n" + line + "\n# Fin");
    EXPECT_EQ(added("- [ ] A\n\n"), "- [ ] A\n" + line + "\n\n");
    EXPECT_EQ(added("- [ ] A\n  "), "- [ ] A\n  \n" + line);
    EXPECT_EQ(added(""), line + "\n");
    EXPECT_EQ(added("\n\n"), line + "\n\n\n");
}

TEST(Add, WritesATitleThatReadsBackWhole) {
    EXPECT_EQ(TaskFile::add("", "❗ Appel · urgent · vite ", today, Clock{9, 5}, true),
              "- [ ] ❗ Appel - urgent - vite · 2025-03-05 09:05\n");
}

TEST(Remove, TakesTheWholeLine) {
    const auto removed = [](std::string_view text, std::size_t n) { return TaskFile::remove(text, key(text, n)); };
    EXPECT_EQ(removed("# T\n- [ ] A\r\n- [ ] B", 0), "# T\n- [ ] B");
    EXPECT_EQ(removed("# T\n- [ ] A\n- [ ] B", 1), "# T\n- [ ] A");
    EXPECT_EQ(removed("- [ ] A", 0), "");
    EXPECT_EQ(removed("- [ ] A\n", 0), "");
    EXPECT_EQ(key(*removed("- [ ] Pain\n- [ ] pain", 0)), TaskFile::hash("pain"));
    EXPECT_EQ(TaskFile::remove("- [ ] A", "x"), std::nullopt);
}
