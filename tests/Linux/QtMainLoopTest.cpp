#include "Tacla/Linux/QtMainLoop.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <vector>

using namespace tacla;
using namespace std::chrono_literals;

// A loop in a program of its own, that runs until the test says that it is done.
struct Program {
    int count = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    QCoreApplication application{count, arguments};
    QtMainLoop loop;
    std::string story;

    auto tell(std::string word) {
        return [this, word] { story += word + " "; };
    }
};

TEST(QtMainLoop, RingsAlarmsInTheOrderOfTheirMoments) {
    Program program;
    auto& loop = program.loop;
    const auto now = loop.now();
    const auto late = loop.at(now + 20ms, program.tell("soon"));
    const auto past = loop.at(now - 8h, program.tell("overdue"));
    const auto before1970 = loop.at(dravel::Instant(-1h), program.tell("ancient"));
    auto dropped = loop.at(now + 10ms, program.tell("dropped"));
    dravel::Timer second;
    const auto nested = loop.at(now - 1h, [&] { second = loop.at(now - 2h, program.tell("nested")); });
    const auto last = loop.at(now + 40ms, QCoreApplication::quit);
    const auto never = loop.at(now + 24h * 365 * 100, program.tell("never"));
    dropped.reset();
    EXPECT_EQ(program.story, "") << "not from within the call";
    QCoreApplication::exec();
    EXPECT_EQ(program.story, "ancient overdue nested soon ");
}

TEST(QtMainLoop, KeepsATimerThatDropsItself) {
    Program program;
    dravel::Timer timer, other;
    timer = program.loop.after(1ms, [&] {
        timer.reset();
        other.reset();
        program.tell("once")();
        program.loop.post(QCoreApplication::quit);
    });
    other = program.loop.after(1h, program.tell("never"));
    QCoreApplication::exec();
    EXPECT_EQ(program.story, "once ");
}

TEST(QtMainLoop, DoubtsALeapOfMoreThanADayUntilItHasHeldForAMinute) {
    struct Look {
        std::chrono::milliseconds sinceBoot, ahead; // of the wall clock, against where it began
        std::chrono::milliseconds believed;
    };
    constexpr auto days = 24h;
    const std::vector<Look> stories[] = {
        {{0s, 0s, 0s}, {2s, 70 * 365 * days, 0s}, {6s, 70 * 365 * days, 0s}, {7s, 0s, 0s}}, // to 2099 and back
        {{0s, 0s, 0s}, {1s, 30 * days, 0s}, {60s, 30 * days, 0s}, {61s, 30 * days + 9s, 30 * days + 9s}},
        {{0s, 0s, 0s}, {1s, -30 * days, 0s}, {59s, 30 * days, 0s}, {90s, 30 * days, 0s}, {91s, -30 * days, 0s}},
        {{0s, 0s, 0s}, {2s, 1 * days, 1 * days}, {4s, 1h, 1h}}, // a day is believed at once
        {{0s, 0s, 0s}, {30 * days, 0s, 0s}},                    // asleep for a month
    };
    for (const auto& story : stories) {
        WallClock clock;
        for (const auto& [sinceBoot, ahead, believed] : story) {
            clock = looked(clock, dravel::Instant(1h + sinceBoot + ahead), sinceBoot);
            EXPECT_EQ(clock.believed, 1h + believed) << sinceBoot.count();
        }
    }
}
