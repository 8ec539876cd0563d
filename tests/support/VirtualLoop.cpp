#include "tests/support/VirtualLoop.h"

#include <algorithm>

namespace tacla::testing {

void VirtualLoop::post(Task task) {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(task));
    someoneWrote_.notify_one();
}

dravel::Timer VirtualLoop::add(Timers VirtualLoop::*timers, milliseconds when, Task task) {
    const Key key{when, ++last_};
    (this->*timers)[key] = std::move(task);
    return dravel::Timer([this, timers, key] { (this->*timers).erase(key); });
}

dravel::Timer VirtualLoop::after(milliseconds delay, Task task) {
    return add(&VirtualLoop::monotonic_, awake_ + delay, std::move(task));
}

dravel::Timer VirtualLoop::at(Instant moment, Task task) {
    return add(&VirtualLoop::wallClock_, moment.time_since_epoch(), std::move(task));
}

std::optional<milliseconds> VirtualLoop::untilNext() const {
    std::optional<milliseconds> next;
    if (!monotonic_.empty()) next = monotonic_.begin()->first.first - awake_;
    if (!wallClock_.empty()) {
        const auto wait = wallClock_.begin()->first.first - wall_.time_since_epoch();
        next = next ? std::min(*next, wait) : wait;
    }
    return next;
}

void VirtualLoop::runPosted() {
    for (;;) {
        Task task;
        {
            const std::lock_guard lock(mutex_);
            if (posted_.empty()) return;
            task = std::move(posted_.front());
            posted_.pop_front();
        }
        task();
    }
}

void VirtualLoop::runPostedByAThread() {
    {
        std::unique_lock lock(mutex_);
        someoneWrote_.wait(lock, [this] { return !posted_.empty(); });
    }
    runPosted();
}

void VirtualLoop::runDue() {
    runPosted();
    for (auto wait = untilNext(); wait && *wait <= milliseconds(0); wait = untilNext()) {
        const bool byWallClock = !wallClock_.empty() && wallClock_.begin()->first.first <= wall_.time_since_epoch();
        auto& timers = byWallClock ? wallClock_ : monotonic_;
        const auto task = std::move(timers.begin()->second);
        timers.erase(timers.begin());
        task();
        runPosted();
    }
}

void VirtualLoop::advance(milliseconds time) {
    runDue();
    while (time > milliseconds(0)) {
        const auto step = std::min(time, untilNext().value_or(time));
        wall_ += step;
        awake_ += step;
        time -= step;
        runDue();
    }
}

void VirtualLoop::advanceTo(Instant moment) { advance(moment - wall_); }

void VirtualLoop::suspend(milliseconds time) {
    wall_ += time;
    runDue();
}

void VirtualLoop::setClock(Instant moment) {
    wall_ = moment;
    runDue();
}

void VirtualBackground::start(Work work) {
    if (held) {
        jobs_.push_back(std::move(work));
        return;
    }
    loop_.post([this, work = std::move(work)] { run(work); });
}

void VirtualBackground::run(const Work& work) { work(std::stop_token())(); }

void VirtualBackground::runOne() {
    const auto work = std::move(jobs_.front());
    jobs_.pop_front();
    run(work);
    loop_.runPosted();
}

}
