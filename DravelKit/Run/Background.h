#pragma once

#include "DravelKit/Run/MainLoop.h"

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <stop_token>
#include <utility>
#include <variant>

namespace dravel {

// What a job came to: its result, or what it threw.
template <class Result>
using Outcome = std::variant<Result, std::exception_ptr>;

struct Nothing {};

// Blocking work away from the main thread. A job gets copies and returns a value; `done` runs on the main thread.
class Background {
  public:
    virtual ~Background() = default;

    template <class Result>
    void run(std::function<Result(std::stop_token)> job, std::function<void(Outcome<Result>)> done) {
        start([job = std::move(job), done = std::move(done)](std::stop_token stop) -> std::function<void()> {
            Outcome<Result> outcome;
            try {
                outcome = job(stop);
            } catch (...) { // the edge of a job: whatever it threw belongs to `done`
                outcome = std::current_exception();
            }
            return [done, outcome = std::move(outcome)] { done(outcome); };
        });
    }

  protected:
    // Runs the work on a thread of its own, then what it returned on the main thread, unless the program quits first.
    using Work = std::function<std::function<void()>(std::stop_token)>;
    virtual void start(Work) = 0;
};

// A thread per job. At destruction every job is asked to stop and joined; one that has not ended within a second is
// left behind, and what it comes to is dropped.
class ThreadedBackground final : public Background {
  public:
    explicit ThreadedBackground(MainLoop&, std::chrono::milliseconds patience = std::chrono::seconds(1));
    ~ThreadedBackground() override;

  protected:
    void start(Work) override;

  private:
    struct Jobs;
    std::shared_ptr<Jobs> jobs_;
    std::chrono::milliseconds patience_;
};

}
