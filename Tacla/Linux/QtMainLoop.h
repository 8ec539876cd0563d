#pragma once

#include "DravelKit/Run/MainLoop.h"

#include <QObject>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace tacla {

// The main loop of a Qt program. Needs a QCoreApplication for its timers; tasks may be posted before there is one.
class QtMainLoop final : public dravel::MainLoop {
  public:
    QtMainLoop();
    ~QtMainLoop() override;

    void post(Task) override;
    dravel::Timer after(std::chrono::milliseconds, Task) override;
    dravel::Timer at(dravel::Instant, Task) override;
    dravel::Instant now() const override;

  private:
    QObject context_;
    class Alarms;
    std::shared_ptr<Alarms> alarms_;
};

// What is known of the wall clock, beside the clock that counts from the boot and goes on while the machine sleeps.
struct WallClock {
    using milliseconds = std::chrono::milliseconds;
    struct Doubt {
        milliseconds offset, since; // between the clocks, and of the boot's clock
        bool operator==(const Doubt&) const = default;
    };
    std::optional<milliseconds> believed; // between the clocks
    std::optional<Doubt> doubted;
};

// After a look at both clocks: a leap of more than a day is not believed until it has held for a minute.
WallClock looked(WallClock, dravel::Instant wall, std::chrono::milliseconds sinceBoot);

// For tests: notes how long the main thread ever stood still while work waited for it, in a file that is rewritten with
// each new maximum ("37 ms, computing included 41 ms"). The load of the machine is nobody's fault and never counts.
class Watchdog {
  public:
    explicit Watchdog(std::string file);
    ~Watchdog();

  private:
    struct Beat;
    std::unique_ptr<Beat> beat_;
};

}
