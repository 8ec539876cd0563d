#pragma once

#include "DravelKit/Run/MainLoop.h"

#include <chrono>
#include <deque>
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

    // A job that ends within `patience` is waited for: `done` has run by then.
    template <class Result>
    void run(std::function<Result(std::stop_token)> job, std::function<void(Outcome<Result>)> done,
             std::chrono::milliseconds patience = {}) {
        const Work work = [job = std::move(job),
                           done = std::move(done)](std::stop_token stop) -> std::function<void()> {
            Outcome<Result> outcome;
            try {
                outcome = job(std::move(stop));
            } catch (...) { // the edge of a job: whatever it threw belongs to `done`
                outcome = std::current_exception();
            }
            return [done, outcome = std::move(outcome)]() mutable { done(std::move(outcome)); };
        };
        start(work, patience);
    }

    // Waits for all jobs, however long they take, and for those that they lead to.
    virtual void finish() = 0;

  protected:
    // Runs the work on a thread of its own, then what it returned on the main thread, unless the program quits first.
    using Work = std::function<std::function<void()>(std::stop_token)>;
    virtual void start(Work, std::chrono::milliseconds patience) = 0;
};

// A thread per job. At destruction every job is asked to stop and joined; one that has not ended within a second is
// left behind, and what it comes to is dropped.
class ThreadedBackground final : public Background {
  public:
    explicit ThreadedBackground(MainLoop&, std::chrono::milliseconds patience = std::chrono::seconds(1));
    ~ThreadedBackground() override;

    void finish() override;

  protected:
    void start(Work, std::chrono::milliseconds patience) override;

  private:
    struct Jobs;
    std::shared_ptr<Jobs> jobs_;
    std::chrono::milliseconds patience_;
};

// Jobs one at a time, in the order of asking. Main thread only.
class JobQueue {
  public:
    explicit JobQueue(Background& background) : background_(background) {}

    // A job is waited for as Background does, once its turn has come.
    template <class Result>
    void add(std::function<Result()> job, std::function<void(Outcome<Result>)> done,
             std::chrono::milliseconds patience = {}) {
        const auto ended = lifetime_.guard([this, done = std::move(done)](Outcome<Result> outcome) {
            busy_ = false;
            const auto next = lifetime_.guard([this] { startNext(); });
            done(std::move(outcome));
            next();
        });
        waiting_.push_back([this, job = std::move(job), ended, patience] {
            background_.run<Result>([job](const std::stop_token&) { return job(); }, ended, patience);
        });
        startNext();
    }

    bool isIdle() const { return !busy_ && waiting_.empty(); }

  private:
    void startNext() {
        if (busy_ || waiting_.empty()) return;
        busy_ = true;
        const auto first = std::move(waiting_.front());
        waiting_.pop_front();
        first();
    }

    Background& background_;
    bool busy_ = false;
    std::deque<std::function<void()>> waiting_;
    Lifetime lifetime_;
};

}
