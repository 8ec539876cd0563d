#include "DravelKit/Run/Background.h"
#include "tests/support/VirtualLoop.h"

#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

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
    for (int number = 1; number <= 20; ++number)
        background.run<int>([number](const auto&) { return number == 7 ? throw "no seven" : number; }, done);
    while (finished < 20) loop.runPosted(); // which the threads post to meanwhile
    EXPECT_EQ(sum, 210 - 7);
}

TEST(JobQueue, RunsInOrderAndWaitsOnlyForWhatIsQuick) {
    VirtualLoop loop{dravel::Instant()};
    ThreadedBackground background(loop);
    dravel::JobQueue queue(background);
    std::vector<int> done;
    std::promise<void> release;
    const auto add = [&](int number, std::chrono::milliseconds patience, std::function<void()> work) {
        queue.add<int>([=] { return work(), number; }, [&](const auto& ended) { done.push_back(std::get<int>(ended)); },
                       patience);
    };
    add(1, 1h, [] {});
    EXPECT_EQ(done, (std::vector{1}));
    EXPECT_FALSE(loop.hasPosted()); // what is waited for needs no waking
    add(2, 1ms, [released = release.get_future().share()] { released.wait(); });
    add(3, 1h, [] {});
    EXPECT_EQ(done, (std::vector{1}));
    EXPECT_FALSE(queue.isIdle());
    release.set_value();
    background.finish();
    EXPECT_EQ(done, (std::vector{1, 2, 3}));
    EXPECT_TRUE(queue.isIdle());
    loop.runPosted(); // what came in time is not done again
    EXPECT_EQ(done.size(), 3U);
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
