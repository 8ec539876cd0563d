#include "tests/support/VirtualLoop.h"

#include <algorithm>

namespace tacla::testing {

void VirtualLoop::post(Task task) {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(task));
}

dravel::Timer VirtualLoop::add(Timers& timers, milliseconds when, Task task) {
    const Key key{when, ++last_};
    timers[key] = std::move(task);
    return dravel::Timer([&timers, key] { timers.erase(key); });
}

void VirtualLoop::runPosted() {
    for (std::unique_lock lock(mutex_); !posted_.empty(); lock.lock()) {
        const auto task = std::move(posted_.front());
        posted_.pop_front();
        lock.unlock();
        task();
    }
}

bool VirtualLoop::runFirst(Timers& timers, milliseconds clock) {
    if (timers.empty() || timers.begin()->first.first > clock) return false;
    const auto task = std::move(timers.begin()->second);
    timers.erase(timers.begin());
    task();
    runPosted();
    return true;
}

void VirtualLoop::runDue() {
    runPosted();
    while (runFirst(byWall_, wall_.time_since_epoch()) || runFirst(byMonotonic_, awake_)) {
    }
}

void VirtualLoop::advance(milliseconds time) {
    for (runDue(); time > milliseconds(0); runDue()) {
        auto step = time;
        if (!byMonotonic_.empty()) step = std::min(step, byMonotonic_.begin()->first.first - awake_);
        if (!byWall_.empty()) step = std::min(step, byWall_.begin()->first.first - wall_.time_since_epoch());
        wall_ += step;
        awake_ += step;
        time -= step;
    }
}

void VirtualLoop::setClock(Instant moment) {
    wall_ = moment;
    runDue();
}

void VirtualBackground::start(Work work, milliseconds patience) {
    jobs_.push_back(std::move(work));
    if (held) return;
    if (patience > milliseconds(0)) return runOne();
    loop_.post([this] { runOne(); });
}

void VirtualBackground::finish() {
    while (!jobs_.empty()) runOne();
}

void VirtualBackground::runOne() {
    const auto work = std::move(jobs_.front());
    jobs_.pop_front();
    work(std::stop_token())();
    loop_.runPosted();
}

}
