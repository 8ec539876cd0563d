#pragma once

#include "DravelKit/Run/MainLoop.h"

#include <QObject>

#include <memory>

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

}
