#pragma once

#include "DravelKit/Run/MainLoop.h"

#include <chrono>
#include <utility>

namespace dravel {

// Runs the task every so often, for as long as it lives. A late turn is not made up for.
class RepeatingTimer {
  public:
    RepeatingTimer(MainLoop& loop, std::chrono::milliseconds period, MainLoop::Task task)
        : loop_(loop), period_(period), task_(std::move(task)) {
        arm();
    }
    RepeatingTimer(const RepeatingTimer&) = delete;
    RepeatingTimer& operator=(const RepeatingTimer&) = delete;

  private:
    void arm() {
        next_ = loop_.after(period_, [this] {
            arm(); // first: the task may end this timer
            const auto task = task_;
            task();
        });
    }

    MainLoop& loop_;
    std::chrono::milliseconds period_;
    MainLoop::Task task_;
    Timer next_;
};

}
