#pragma once

#include "DravelKit/Run/Background.h"
#include "DravelKit/Run/MainLoop.h"

#include <deque>
#include <map>
#include <mutex>
#include <utility>

namespace tacla::testing {

using dravel::Instant;
using std::chrono::milliseconds;

// A main loop without a thread, on two clocks that the test moves: the monotonic one stands still in a suspend, and
// only the wall clock can be set.
class VirtualLoop final : public dravel::MainLoop {
  public:
    explicit VirtualLoop(Instant start) : wall_(start) {}

    void post(Task) override;
    [[nodiscard]] dravel::Timer after(milliseconds delay, Task task) override {
        return add(byMonotonic_, awake_ + delay, std::move(task));
    }
    [[nodiscard]] dravel::Timer at(Instant moment, Task task) override {
        return add(byWall_, moment.time_since_epoch(), std::move(task));
    }
    Instant now() const override { return wall_; }

    bool hasPosted() {
        const std::lock_guard lock(mutex_);
        return !posted_.empty();
    }
    void runPosted();           // what has been posted, and what that posts
    void advance(milliseconds); // awake: everything that falls due runs in its order
    void advanceTo(Instant moment) { advance(moment - wall_); }
    void setClock(Instant); // what a clock set forward passed runs at once
    void suspend(milliseconds time) { setClock(wall_ + time); }

  private:
    using Key = std::pair<milliseconds, std::uint64_t>; // when, then in the order of asking
    using Timers = std::map<Key, Task>;

    dravel::Timer add(Timers&, milliseconds when, Task);
    bool runFirst(Timers&, milliseconds clock);
    void runDue();

    Instant wall_;
    milliseconds awake_{0};
    Timers byMonotonic_, byWall_;
    std::uint64_t last_ = 0;
    std::mutex mutex_;
    std::deque<Task> posted_;
};

// Jobs run on the main thread: at once where they are waited for, else through post, or held until the test says.
class VirtualBackground final : public dravel::Background {
  public:
    explicit VirtualBackground(VirtualLoop& loop) : loop_(loop) {}

    bool held = false;
    std::size_t waiting() const { return jobs_.size(); }
    void runOne(); // the oldest held job, and what it comes to
    void finish() override;

  protected:
    void start(Work, std::chrono::milliseconds patience) override;

  private:
    VirtualLoop& loop_;
    std::deque<Work> jobs_;
};

}
