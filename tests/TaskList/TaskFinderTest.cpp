#include "Tacla/TaskList/TaskFinder.h"

#include <gtest/gtest.h>

using namespace tacla;

TEST(TaskFinder, FindsWordsWhateverTheirCaseAccentsAndOrder) {
    const TaskList tasks("- [x] Été fini\n- [ ] Photos de l’ÉTÉ\n- [ ] ❗ Pain et œufs\n- [ ] Fe\u0301te\n");
    const TaskFinder finder(tasks);
    const auto marked = [&](std::string_view typed) {
        std::string text;
        for (const auto found : finder.find(typed)) {
            auto title = tasks[found].title;
            const auto ranges = SoughtWords(typed).rangesIn(title);
            for (auto range = ranges.rbegin(); range != ranges.rend(); ++range)
                title.insert(range->end, "]").insert(range->begin, "[");
            text += title + "\n";
        }
        return text;
    };
    EXPECT_EQ(marked("ete"), "Photos de l’[ÉTÉ]\nF[e\u0301te]\n[Été] fini\n");
    EXPECT_EQ(marked("L'été PHOTO"), "[Photo]s de [l’ÉTÉ]\n");
    EXPECT_EQ(marked("lete"), "Photos de [l’ÉTÉ]\n");
    EXPECT_EQ(marked("oeuf"), "❗ Pain et [œuf]s\n");
    EXPECT_EQ(marked("pain ain a"), "❗ [Pain] et œufs\n");
    EXPECT_EQ(marked("pain été"), "");
    for (const auto* nothing : {"", "  ", "'", "\xC3"}) EXPECT_EQ(marked(nothing), "") << nothing;
}
