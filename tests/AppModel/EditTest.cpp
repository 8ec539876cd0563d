#include "tests/support/ModelWorld.h"

#include <gtest/gtest.h>

namespace tacla::testing {

using namespace std::chrono_literals;

TEST(AppModel, EditsTitleAndMomentByTheirRules) {
    const std::tuple<const char*, std::optional<Day>, std::optional<Clock>, const char*> table[] = {
        {"Lait", Day{2025, 3, 9}, Clock{9, 5}, "- [ ] ❗ Lait · 2025-03-09 09:05\n"},
        {"  ❗ Lait ", Day{2025, 3, 6}, {}, "- [ ] ❗ Lait · 2025-03-06\n"},
        {"Lait", {}, {}, "- [ ] ❗ Lait · 2025-03-06\n"},
        {"PAIN", {}, {}, "- [ ] ❗ PAIN · 2025-03-06\n"},
        {"a · b · · c", {}, {}, "- [ ] ❗ a - b - - c · 2025-03-06\n"},
        {"  ", Day{2025, 3, 7}, {}, "- [ ] ❗ Pain · 2025-03-07\n"},
        {"two\nlines", Day{2025, 3, 7}, {}, "- [ ] ❗ Pain · 2025-03-07\n"},
        {"two\u2028lines", {}, {}, "- [ ] ❗ Pain · 2025-03-06\n"},
    };
    for (const auto& [title, day, time, text] : table) {
        ModelWorld world("2025-03-04 08:00", "- [ ] ❗ Pain · 2025-03-06\n");
        world.start();
        world.model.edit(world.task("❗ Pain"), title, day, time);
        EXPECT_EQ(world.text(), text) << title;
    }
}

TEST(AppModel, StaysSilentAfterAnEditIntoThePastAndAfterARename) {
    ModelWorld world("2025-03-04 10:00", "- [ ] A · 2025-03-04\n- [ ] B · 2025-03-05\n");
    world.start();
    EXPECT_EQ(world.notifications.transcript(), "10:00 A | Prévue aujourd'hui\n");
    world.model.edit(world.task("A"), "AA", Day{2025, 3, 4}, {});
    world.model.edit(world.task("B"), "B", Day{2025, 3, 4}, Clock{9, 59});
    world.loop.advance(48h);
    EXPECT_EQ(world.notifications.transcript(), "");
}

}
