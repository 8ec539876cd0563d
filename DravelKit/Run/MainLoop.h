#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Foundation/Signal.h"

#include <chrono>
#include <functional>

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

}
