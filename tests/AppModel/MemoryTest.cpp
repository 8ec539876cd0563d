#include "tests/support/ModelWorld.h"

#include <malloc.h>

namespace tacla::testing {

// A day of a user: what rings, is edited here and in an editor, comes over the terminal, and a night.
static void liveADay(ModelWorld& world) {
    const auto today = Day::of(world.loop.now());
    std::string text = "# Liste\n";
    for (int hour = 8; hour < 20; ++hour)
        text += "- [ ] Tâche " + std::to_string(hour) + " · " + today.description() + " " +
                Clock{hour, 30}.description() + "\n";
    world.save(text);
    for (int hour = 8; hour < 20; ++hour) {
        world.loop.advance(1h);
        const auto title = "Tâche " + std::to_string(hour);
        world.list().edit(world.task(title), {.title = title + " bis"});
        world.list().undo();
        world.list().edit(world.task(title), {.title = title + " ter"});
        world.loop.advance(1s);
        world.list().toggle(world.task(title + " ter"));
        world.save(world.text() + "- [ ] Note " + std::to_string(hour) + "\n");
    }
    world.loop.suspend(8h);
    world.model.wokeUp();
    world.loop.advance(4h);
    world.notifications.shown.clear();
    world.calendar.runs.clear();
    world.calendar.sent.clear();
}

TEST(AppModel, TakesNoMoreMemoryAfterEightDays) {
    if (std::filesystem::is_directory("/dev/shm")) ::setenv("TMPDIR", "/dev/shm", 1); // hundreds of saves
    MirroredWorld world("");
    const auto inUseAfter = [&world](int days) {
        for (int day = 0; day < days; ++day) liveADay(world);
        return static_cast<std::int64_t>(mallinfo2().uordblks);
    };
    const auto first = inUseAfter(1), eighth = inUseAfter(7);
    // Two hundred thousand looks at the file and hundreds of edits: what each left behind would show. A little is kept
    // indeed: what rang, and what the allocator caches.
    EXPECT_LT(eighth - first, 128 * 1024);
}

}
