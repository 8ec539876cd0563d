#include "Tacla/Linux/QtMainLoop.h"

#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <map>
#include <sys/timerfd.h>
#include <unistd.h>
#include <utility>

namespace tacla {

namespace {

using dravel::Instant;

timespec asTimespec(Instant instant) {
    // All zero would disarm the timer, and the kernel refuses what is before 1970.
    const auto milliseconds = std::max<std::int64_t>(1, instant.time_since_epoch().count());
    return {.tv_sec = milliseconds / 1000, .tv_nsec = milliseconds % 1000 * 1'000'000};
}

}

// All alarms share one kernel timer, set to the earliest. CLOCK_REALTIME goes on while the machine sleeps, and
// TFD_TIMER_CANCEL_ON_SET tells at once when the clock is set: QTimer does neither.
class QtMainLoop::Alarms {
  public:
    Alarms() : descriptor_(timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC)) {}
    ~Alarms() { close(descriptor_); }
    Alarms(const Alarms&) = delete;
    Alarms& operator=(const Alarms&) = delete;

    std::uint64_t add(Instant instant, Task task) {
        if (!notifier_) {
            notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
            QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { ring(); });
        }
        pending_.emplace(std::pair(instant, ++last_), std::move(task));
        arm();
        return last_;
    }

    void remove(Instant instant, std::uint64_t number) {
        if (pending_.erase({instant, number}) > 0) arm();
    }

  private:
    void ring() {
        std::uint64_t expirations = 0;
        // Fails with ECANCELED when the clock was set; there is nothing to do but look at the clock again.
        const bool told = read(descriptor_, &expirations, sizeof expirations) > 0 || errno == ECANCELED;
        const auto newest = last_; // what a task adds waits for the next round
        const auto now = dravel::systemNow();
        bool any = false;
        for (auto next = pending_.begin(); next != pending_.end() && next->first.first <= now;) {
            const auto key = next->first;
            if (key.second <= newest) {
                const auto task = std::move(next->second);
                pending_.erase(next);
                any = true;
                task();
            }
            next = pending_.upper_bound(key);
        }
        // A kernel and a process that disagree about the time (a faked clock) must not spin.
        if (told && !any && expirations > 0) return holdOff_.start(std::chrono::seconds(1));
        arm();
    }

    void arm() {
        itimerspec when{};
        if (!pending_.empty()) when.it_value = asTimespec(pending_.begin()->first.first);
        timerfd_settime(descriptor_, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &when, nullptr);
    }

    struct HoldOff : QTimer {
        explicit HoldOff(Alarms& alarms) {
            setSingleShot(true);
            callOnTimeout([&alarms] { alarms.arm(); });
        }
    };

    int descriptor_;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::map<std::pair<Instant, std::uint64_t>, Task> pending_;
    std::uint64_t last_ = 0;
    HoldOff holdOff_{*this};
};

QtMainLoop::QtMainLoop() : alarms_(std::make_shared<Alarms>()) {}
QtMainLoop::~QtMainLoop() = default;

void QtMainLoop::post(Task task) {
    QMetaObject::invokeMethod(
        &context_, [task = std::move(task)] { task(); }, Qt::QueuedConnection);
}

dravel::Timer QtMainLoop::after(std::chrono::milliseconds delay, Task task) {
    auto* timer = new QTimer(&context_);
    timer->setSingleShot(true);
    timer->callOnTimeout([timer, task = std::move(task)] {
        timer->deleteLater();
        task();
    });
    timer->start(delay);
    return dravel::Timer([timer = QPointer(timer)] {
        if (!timer) return;
        timer->stop();
        timer->deleteLater();
    });
}

dravel::Timer QtMainLoop::at(Instant instant, Task task) {
    const auto number = alarms_->add(instant, std::move(task));
    return dravel::Timer([alarms = std::weak_ptr(alarms_), instant, number] {
        if (const auto alive = alarms.lock()) alive->remove(instant, number);
    });
}

}
