#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Foundation/Signal.h"

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace dravel {

// A pending timer: dropping it cancels it. It may be dropped while it runs.
using Timer = Connection;

// The main thread's event loop. Real: Qt's. Virtual: a loop whose clock the test moves.
class MainLoop {
  public:
    using Task = std::function<void()>;

    virtual ~MainLoop() = default;

    // Runs the task on the main thread, soon, in order. May be called from any thread.
    virtual void post(Task) = 0;

    // Runs the task once that much time has passed awake (a monotonic clock).
    [[nodiscard]] virtual Timer after(std::chrono::milliseconds, Task) = 0;

    // Runs the task at the wall-clock instant, or as soon as the machine is awake after it. A clock that is set,
    // forward or back, is followed. An instant in the past runs soon, never from within this call.
    [[nodiscard]] virtual Timer at(Instant, Task) = 0;

    virtual Instant now() const = 0;
};

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

// A member that ends with its owner: what it guards does nothing from then on. For callbacks that may come too late.
class Lifetime {
  public:
    template <class Function>
    auto guard(Function function) const {
        return [token = std::weak_ptr(token_), function = std::move(function)](auto&&... arguments) {
            if (!token.expired()) function(std::forward<decltype(arguments)>(arguments)...);
        };
    }

  private:
    struct Token {};
    std::shared_ptr<Token> token_ = std::make_shared<Token>();
};

}
