#pragma once

#include <functional>
#include <string>

// The system calls of this test program go through wrappers. A fault makes some of them fail, as long as it lives.
namespace tacla::testing {

class Fault {
  public:
    enum class Kind { none, once, forGood, kill };
    // From the n-th call on, counted from 0. "kill" ends the process just before that call.
    Fault(int call, Kind);
    // Runs an action just before a call of that name, the first time.
    Fault(std::string name, std::function<void()> action);
    // Every call of that name fails so.
    Fault(std::string name, int error);
    ~Fault();
    Fault(const Fault&) = delete;
    Fault& operator=(const Fault&) = delete;

    int calls() const { return calls_; }
    int strike(const char* name); // the error to fail with, 0 for none

  private:
    int call_ = 0, calls_ = 0, error_ = 0;
    Kind kind_ = Kind::none;
    std::string name_;
    std::function<void()> action_;
};

}
