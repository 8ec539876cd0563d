#pragma once

#include <chrono>
#include <string>

namespace tacla {

// Whether a message bus answers at an address, found out without ever waiting longer than asked. A bus library that
// connects to a socket on which nobody answers waits for half a minute.
class BusProbe {
  public:
    explicit BusProbe(const std::string& address);
    ~BusProbe();
    BusProbe(const BusProbe&) = delete;
    BusProbe& operator=(const BusProbe&) = delete;

    enum class State { answers, silent, absent };
    State state(std::chrono::milliseconds patience = {});

    int descriptor() const { return descriptor_; } // readable as soon as there is an answer

  private:
    State state_ = State::absent;
    int descriptor_ = -1;
};

// "" when there is none. Never "autolaunch:", which would start a bus of its own.
std::string sessionBusAddress();
std::string systemBusAddress();

}
