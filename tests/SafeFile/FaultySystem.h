#pragma once

#include <functional>
#include <string>

namespace tacla::testing {

// The system calls of this test program go through wrappers. A fault makes some of them fail, as long as it lives.
class Fault {
  public:
    enum class Kind { none, once, forGood, kill };
    // The n-th call, counted from 0, or all from there on. "kill" ends the process just before it.
    Fault(int call, Kind);
    // Runs an action just before the first call of that name; then the calls of that name fail so, unless it is 0.
    Fault(std::string name, std::function<void()> action, int error = 0);
    ~Fault();

    int calls() const { return calls_; }
    int strike(const std::string& name); // the error to fail with, 0 for none

  private:
    int call_ = -1, calls_ = 0, error_;
    Kind kind_ = Kind::none;
    std::string name_;
    std::function<void()> action_;
};

}
