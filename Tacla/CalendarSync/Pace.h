#pragma once

#include <chrono>
#include <optional>

namespace tacla {

// How fast requests may follow one another, so that the service never has a reason to refuse one: 200 at once, then 6 a
// second. After a refusal for that reason the next run waits 1, 2, 4 … 64 s, or as long as the service asked for.
// A value without a clock: every question brings its moment, and every answer is the time still to wait.
class Pace {
  public:
    using Moment = std::chrono::steady_clock::time_point;
    using Wait = std::chrono::milliseconds;

    Wait beforeRun(Moment now) const;
    Wait beforeRequest(Moment now); // counts the request

    void refused(Moment now, std::optional<std::chrono::seconds> retryAfter);
    void completed(); // a whole run went through

  private:
    double allowance_ = 200; // requests that may go at once; negative while requests wait for their turn
    Moment counted_{};
    Moment notBefore_{};
    std::chrono::seconds backoff_{1};
};

}
