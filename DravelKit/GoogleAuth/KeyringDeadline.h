#pragma once

#include <gio/gio.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>

namespace dravel {

// Cancels a conversation with the keyring when its time is up or when the stop token asks. The time that the user
// spends in the desktop's own dialog does not count.
class KeyringDeadline {
  public:
    KeyringDeadline(std::chrono::milliseconds, std::stop_token);

    GCancellable* cancellable() const { return cancellable_.get(); }
    bool passed() const;

    void dialogOpened();
    void dialogClosed(); // the time starts anew

  private:
    void watch(const std::stop_token&);

    const std::chrono::milliseconds time_;
    const std::unique_ptr<GCancellable, decltype(&g_object_unref)> cancellable_;
    mutable std::mutex mutex_; // guards the next four
    std::condition_variable_any changed_;
    std::chrono::steady_clock::time_point end_;
    int dialogs_ = 0;
    bool passed_ = false;
    std::stop_callback<std::function<void()>> stopped_;
    std::jthread watcher_; // last: it ends before what it uses
};

}
