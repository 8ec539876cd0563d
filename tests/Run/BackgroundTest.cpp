#include "DravelKit/Run/Background.h"
#include "tests/support/VirtualLoop.h"

#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <thread>

using namespace std::chrono_literals;
using dravel::Outcome;
using dravel::ThreadedBackground;
using tacla::testing::VirtualLoop;

TEST(ThreadedBackground, BringsEachResultToTheMainThread) {
    VirtualLoop loop{dravel::Instant()};
    ThreadedBackground background(loop);
    int sum = 0, finished = 0;
    const auto done = [&, main = std::this_thread::get_id()](const Outcome<int>& outcome) {
        EXPECT_EQ(std::this_thread::get_id(), main);
        ++finished;
        if (const int* result = std::get_if<int>(&outcome)) sum += *result;
    };
    for (int number = 1; number <= 20; ++number) {
        background.run<int>(
            [number](const std::stop_token&) { return number == 7 ? throw std::runtime_error("no seven") : number; },
            done);
    }
    while (finished < 20) loop.runPostedByAThread();
    EXPECT_EQ(sum, 210 - 7);
}

TEST(ThreadedBackground, StopsItsJobsAtQuitLeavesTheDeafBehindAndDropsWhatTheyComeTo) {
    VirtualLoop loop{dravel::Instant()};
    std::promise<void> stopped, release, deafEnded;
    const auto dropped = [](const Outcome<int>&) { FAIL() << "the program has quit"; };
    const auto obedient = [&stopped](const std::stop_token& stop) {
        std::promise<void> told;
        const std::stop_callback callback(stop, [&told] { told.set_value(); });
        told.get_future().wait();
        stopped.set_value();
        return 1;
    };
    const auto deaf = [&deafEnded, released = release.get_future().share()](const std::stop_token&) {
        released.wait();
        deafEnded.set_value();
        return 2;
    };
    {
        ThreadedBackground background(loop, 10ms);
        background.run<int>(obedient, dropped);
        background.run<int>(deaf, dropped);
    }
    stopped.get_future().wait();
    release.set_value();
    deafEnded.get_future().wait();
    loop.runPosted();
}
