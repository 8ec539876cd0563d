#include "Tacla/Linux/QtMainLoop.h"

#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <fstream>
#include <map>
#include <thread>
#include <utility>

namespace tacla {

namespace {

using dravel::Instant;
using std::chrono::nanoseconds;
using namespace std::chrono_literals;

timespec asTimespec(Instant instant) {
    // All zero would disarm the timer, and the kernel refuses what is before 1970.
    const auto milliseconds = std::max<std::int64_t>(1, instant.time_since_epoch().count());
    return {.tv_sec = milliseconds / 1000, .tv_nsec = milliseconds % 1000 * 1'000'000};
}

nanoseconds total(const char* pressure) {
    std::ifstream file(pressure); // "some avg10=0.00 avg60=0.00 avg300=0.00 total=3141007954", in microseconds
    std::string line;
    std::getline(file, line);
    const auto at = line.find("total=");
    return at == line.npos ? 0ns : std::chrono::microseconds(std::stoll(line.substr(at + 6)));
}

// Time that is nobody's fault: the thread computed or queued for a processor, or the machine was too busy for somebody
// whose answer may have been waited for.
struct Excused {
    nanoseconds computing, queueing, busy;

    static Excused of(const std::string& schedstat) {
        std::int64_t computing = 0, queueing = 0;
        std::ifstream(schedstat) >> computing >> queueing;
        return {nanoseconds(computing), nanoseconds(queueing),
                total("/proc/pressure/cpu") + total("/proc/pressure/io")};
    }
};

}

WallClock looked(WallClock clock, Instant wall, std::chrono::milliseconds sinceBoot) {
    const auto offset = wall.time_since_epoch() - sinceBoot;
    const auto near = [offset](std::chrono::milliseconds other, std::chrono::milliseconds reach) {
        return std::chrono::abs(offset - other) <= reach;
    };
    const bool held = clock.doubted && near(clock.doubted->offset, 1min) && sinceBoot - clock.doubted->since >= 1min;
    if (!clock.believed || near(*clock.believed, 24h) || held) return {.believed = offset, .doubted = {}};
    if (!clock.doubted || !near(clock.doubted->offset, 1min)) clock.doubted = {offset, sinceBoot};
    return clock;
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

    Instant now() {
        timespec boot{};
        clock_gettime(CLOCK_BOOTTIME, &boot);
        const auto sinceBoot = std::chrono::floor<std::chrono::milliseconds>(std::chrono::seconds(boot.tv_sec) +
                                                                             nanoseconds(boot.tv_nsec));
        clock_ = looked(clock_, dravel::systemNow(), sinceBoot);
        return Instant(sinceBoot + *clock_.believed);
    }

  private:
    void ring() {
        std::uint64_t expirations = 0;
        // Fails with ECANCELED when the clock was set; there is nothing to do but look at the clock again.
        const bool told = read(descriptor_, &expirations, sizeof expirations) > 0 || errno == ECANCELED;
        const auto newest = last_; // what a task adds waits for the next round
        const auto present = now();
        bool any = false;
        for (auto next = pending_.begin(); next != pending_.end() && next->first.first <= present;) {
            const auto key = next->first;
            if (key.second <= newest) {
                const auto task = std::move(next->second);
                pending_.erase(next);
                any = true;
                task();
            }
            next = pending_.upper_bound(key);
        }
        // A kernel and a process that disagree about the time (a faked clock, or a leap in doubt) must not spin.
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
    WallClock clock_;
};

QtMainLoop::QtMainLoop() : alarms_(std::make_shared<Alarms>()) {}
QtMainLoop::~QtMainLoop() = default;

void QtMainLoop::post(Task task) { QMetaObject::invokeMethod(&context_, std::move(task), Qt::QueuedConnection); }

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

dravel::Instant QtMainLoop::now() const { return alarms_->now(); }

dravel::Timer QtMainLoop::at(Instant instant, Task task) {
    const auto number = alarms_->add(instant, std::move(task));
    return dravel::Timer([alarms = std::weak_ptr(alarms_), instant, number] {
        if (const auto alive = alarms.lock()) alive->remove(instant, number);
    });
}

struct Watchdog::Beat {
    explicit Beat(std::string path)
        : file(std::move(path)), schedstat("/proc/self/task/" + std::to_string(gettid()) + "/schedstat"),
          thread([this](const std::stop_token& stop) { run(stop); }) {}

    void run(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            const auto sent = std::chrono::steady_clock::now();
            const auto before = Excused::of(schedstat);
            answered = false;
            const auto ask = [this, sent, before] { answer(sent, before); };
            QMetaObject::invokeMethod(&context, ask, Qt::QueuedConnection);
            while (!answered && !stop.stop_requested()) std::this_thread::sleep_for(5ms);
            std::this_thread::sleep_for(5ms);
        }
    }

    void answer(std::chrono::steady_clock::time_point sent, const Excused& before) {
        using std::chrono::milliseconds;
        const auto now = Excused::of(schedstat);
        const auto queueing = now.queueing - before.queueing;
        const auto busy = (std::chrono::steady_clock::now() - sent) - queueing;
        const auto stoodStill =
            busy - (now.computing - before.computing) - std::max(0ns, now.busy - before.busy - queueing);
        const auto longer = std::max(longest, std::chrono::duration_cast<milliseconds>(stoodStill));
        const auto longerBusy = std::max(longestBusy, std::chrono::duration_cast<milliseconds>(busy));
        if (std::exchange(longest, longer) != longer || std::exchange(longestBusy, longerBusy) != longerBusy)
            std::ofstream(file) << longest.count() << " ms, computing included " << longestBusy.count() << " ms\n";
        answered = true;
    }

    std::string file, schedstat;
    std::chrono::milliseconds longest{-1}, longestBusy{-1};
    std::atomic<bool> answered = false;
    QObject context;
    std::jthread thread; // last: it uses the others
};

Watchdog::Watchdog(std::string file) : beat_(std::make_unique<Beat>(std::move(file))) {}
Watchdog::~Watchdog() = default;

}
