#pragma once

#include "DravelKit/Run/Background.h"
#include "DravelKit/Run/MainLoop.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
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
    [[nodiscard]] dravel::Timer after(milliseconds, Task) override;
    [[nodiscard]] dravel::Timer at(Instant, Task) override;
    Instant now() const override { return wall_; }

    void runPosted();           // what has been posted, and what that posts
    void advance(milliseconds); // awake: everything that falls due runs in its order
    void advanceTo(Instant);
    void suspend(milliseconds); // the wall clock goes on alone; what it passed runs at the resume
    void setClock(Instant);     // so does what a clock set forward passed
    void runPostedByAThread();  // waits for another thread to post

  private:
    using Key = std::pair<milliseconds, std::uint64_t>; // when, then in the order of asking
    using Timers = std::map<Key, Task>;

    dravel::Timer add(Timers VirtualLoop::*timers, milliseconds when, Task);
    std::optional<milliseconds> untilNext() const;
    void runDue();

    Instant wall_;
    milliseconds awake_{0};
    Timers monotonic_, wallClock_;
    std::uint64_t last_ = 0;
    std::mutex mutex_;
    std::condition_variable someoneWrote_;
    std::deque<Task> posted_;
};

// Jobs run on the main thread: at once, through post, or when the test says.
class VirtualBackground final : public dravel::Background {
  public:
    explicit VirtualBackground(VirtualLoop& loop) : loop_(loop) {}

    bool held = false; // jobs wait for runOne
    std::size_t waiting() const { return jobs_.size(); }
    void runOne(); // the oldest waiting job, and what it comes to

  protected:
    void start(Work) override;

  private:
    void run(const Work&);

    VirtualLoop& loop_;
    std::deque<Work> jobs_;
};

}
