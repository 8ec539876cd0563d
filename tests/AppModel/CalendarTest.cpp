#include "tests/support/ModelWorld.h"

#include <fstream>

namespace tacla::testing {

TEST(AppModel, SyncsOnceForABurstOfEdits) {
    MirroredWorld world("- [ ] A\n- [ ] B\n- [ ] C\n");
    for (const auto* title : {"A", "B", "C"}) {
        world.list().toggle(world.task(title));
        world.loop.advance(200ms);
    }
    world.loop.advance(299ms);
    EXPECT_EQ(world.calendar.runs.size(), 0U);
    world.loop.advance(10s);
    EXPECT_EQ(world.calendar.runs.size(), 1U);
    EXPECT_EQ(world.state().lastSync, moment("2025-03-04 08:00") + 1900ms);
}

TEST(AppModel, SyncsAgainHalfASecondAfterARunThatAnEditOvertook) {
    MirroredWorld world("- [ ] A\n");
    world.background.held = true;
    world.mirror(Happened::syncDue);
    world.list().toggle(world.task("A")); // while it waits for its turn: it goes with it
    world.background.runOne();
    world.save("- [ ] B\n"); // an editor, while it sends
    world.loop.advance(2s);
    world.background.runOne();
    world.background.held = false;
    EXPECT_EQ(world.calendar.sent, std::vector<std::string>{"A: done"});
    world.loop.advance(500ms);
    EXPECT_EQ(world.calendar.sent, (std::vector<std::string>{"A: done", "B"}));
    world.loop.advance(9min);
    EXPECT_EQ(world.calendar.runs.size(), 2U);
}

TEST(AppModel, TriesAgainLaterAndLaterAndAtOnceWhenTheNetworkIsBack) {
    MirroredWorld world("- [ ] A\n");
    world.calendar.passing = true;
    world.mirror(Happened::syncDue);
    world.loop.advance(0s);
    for (const auto wait : {15s, 30s, 60s, 120s, 240s}) {
        const auto before = world.calendar.runs.size();
        world.loop.advance(wait - 1s);
        EXPECT_EQ(world.calendar.runs.size(), before);
        world.loop.advance(1s);
        EXPECT_EQ(world.calendar.runs.size(), before + 1);
    }
    EXPECT_EQ(world.state().syncHint, "attendre");
    world.calendar.passing = false;
    world.mirror(Happened::networkBack);
    world.loop.advance(0s);
    EXPECT_EQ(world.calendar.runs.size(), 7U);
    EXPECT_EQ(world.state().syncError, std::nullopt);
    EXPECT_EQ(world.state().syncHint, std::nullopt);
    world.mirror(Happened::networkBack);
    world.loop.advance(1min);
    EXPECT_EQ(world.calendar.runs.size(), 7U);
}

TEST(AppModel, StopsTheRunWhenTheUserSaysNo) {
    for (const bool signsOut : {false, true}) {
        MirroredWorld world("- [ ] A\n");
        world.background.held = true;
        world.mirror(Happened::syncDue);
        world.background.runOne(); // its turn
        signsOut ? world.mirror(Happened::signOutAsked) : world.mirror(Happened::switchAsked, false);
        world.background.runOne();
        EXPECT_TRUE(world.calendar.stopped);
    }
}

TEST(AppModel, SyncsAgainOnceTheFileCanBeWrittenAgain) {
    MirroredWorld world("- [ ] A\n");
    std::optional<std::ofstream> writer(std::in_place, world.file, std::ios::app);
    world.list().toggle(world.task("A"));
    EXPECT_NE(world.state().fileError, std::nullopt);
    writer.reset();
    world.loop.advance(9min);
    EXPECT_EQ(world.state().fileError, std::nullopt);
    EXPECT_EQ(world.calendar.runs.size(), 1U) << "without waiting for the period";
}

}
