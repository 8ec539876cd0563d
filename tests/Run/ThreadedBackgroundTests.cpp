#include "DravelKit/Run/ThreadedBackground.h"
#include "tests/support/VirtualLoop.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

using namespace std::chrono_literals;
using dravel::Outcome;
using dravel::ThreadedBackground;
using tacla::testing::VirtualLoop;

TEST(ThreadedBackground, BringsEachResultToTheMainThread) {
    VirtualLoop loop{dravel::Instant()};
    ThreadedBackground background(loop);
    const auto main = std::this_thread::get_id();
    int sum = 0, finished = 0;
    const auto done = [&](const Outcome<int>& outcome) {
        EXPECT_EQ(std::this_thread::get_id(), main);
        ++finished;
        if (const int* result = std::get_if<int>(&outcome)) sum += *result;
    };
    for (int number = 1; number <= 20; ++number) {
        const auto job = [number, main](const std::stop_token&) {
            EXPECT_NE(std::this_thread::get_id(), main);
            if (number == 7) throw std::runtime_error("no seven");
            return number;
        };
        background.run<int>(job, done);
    }
    while (finished < 20) loop.runPostedByAThread();
    EXPECT_EQ(sum, 210 - 7);
}

TEST(ThreadedBackground, StopsItsJobsAtQuitLeavesTheDeafBehindAndDropsWhatTheyComeTo) {
    VirtualLoop loop{dravel::Instant()};
    std::promise<void> asked, release;
    const auto released = std::make_shared<std::shared_future<void>>(release.get_future());
    std::promise<void> deafEnded;
    const auto dropped = [](const Outcome<int>&) { FAIL() << "the program has quit"; };
    {
        ThreadedBackground background(loop, 10ms);
        background.run<int>(
            [&asked](const std::stop_token& stop) {
                std::promise<void> told;
                const std::stop_callback callback(stop, [&told] { told.set_value(); });
                told.get_future().wait();
                asked.set_value();
                return 1;
            },
            dropped);
        background.run<int>(
            [released, &deafEnded](const std::stop_token&) {
                released->wait();
                deafEnded.set_value();
                return 2;
            },
            dropped);
    }
    asked.get_future().wait();
    release.set_value();
    deafEnded.get_future().wait();
    loop.runPosted();
}
