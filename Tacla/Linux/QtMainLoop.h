#pragma once

#include "DravelKit/Run/MainLoop.h"

#include <QObject>

#include <memory>
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
    dravel::Instant now() const override { return dravel::systemNow(); }

  private:
    QObject context_;
    class Alarms;
    std::shared_ptr<Alarms> alarms_;
};

// For tests: notes how long the main thread ever stood still while work waited for it, in a file that is rewritten with
// each new maximum ("37 ms"). Only waiting counts: neither computing nor the load of the machine is a blocking call.
class Watchdog {
  public:
    explicit Watchdog(std::string file);
    ~Watchdog();

  private:
    struct Beat;
    std::unique_ptr<Beat> beat_;
};

}
