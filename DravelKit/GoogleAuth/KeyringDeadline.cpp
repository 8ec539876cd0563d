#include "DravelKit/GoogleAuth/KeyringDeadline.h"

namespace dravel {

KeyringDeadline::KeyringDeadline(std::chrono::milliseconds time, std::stop_token stop)
    : time_(time), cancellable_(g_cancellable_new(), g_object_unref), end_(std::chrono::steady_clock::now() + time),
      stopped_(std::move(stop), [cancellable = cancellable_.get()] { g_cancellable_cancel(cancellable); }),
      watcher_([this](const std::stop_token& over) { watch(over); }) {}

bool KeyringDeadline::passed() const {
    const std::lock_guard lock(mutex_);
    return passed_;
}

void KeyringDeadline::dialogOpened() {
    const std::lock_guard lock(mutex_);
    ++dialogs_;
    changed_.notify_all();
}

void KeyringDeadline::dialogClosed() {
    const std::lock_guard lock(mutex_);
    --dialogs_;
    end_ = std::chrono::steady_clock::now() + time_;
    changed_.notify_all();
}

void KeyringDeadline::watch(const std::stop_token& over) {
    std::unique_lock lock(mutex_);
    while (!over.stop_requested()) {
        if (dialogs_ > 0) {
            changed_.wait(lock, over, [this] { return dialogs_ == 0; });
        } else if (std::chrono::steady_clock::now() < end_) {
            changed_.wait_until(lock, over, end_, [this] { return dialogs_ > 0; });
        } else {
            passed_ = true;
            lock.unlock(); // cancelling runs the callbacks of whoever waits
            g_cancellable_cancel(cancellable_.get());
            return;
        }
    }
}

}
