#pragma once

#include <memory>
#include <string>

namespace tacla {

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
