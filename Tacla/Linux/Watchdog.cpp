#include "Tacla/Linux/Watchdog.h"

#include <QObject>

#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>
#include <unistd.h>
#include <utility>

namespace tacla {

namespace {

using std::chrono::nanoseconds;
using namespace std::chrono_literals;

// The main thread's time on a processor, and in the queue for one.
nanoseconds computingAndQueueing(const std::string& schedstat) {
    std::int64_t computing = 0, queueing = 0;
    std::ifstream(schedstat) >> computing >> queueing;
    return nanoseconds(computing + queueing);
}

}

struct Watchdog::Beat {
    explicit Beat(std::string path)
        : file(std::move(path)), schedstat("/proc/self/task/" + std::to_string(gettid()) + "/schedstat"),
          thread([this](std::stop_token stop) { run(stop); }) {}

    void run(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            const auto sent = std::chrono::steady_clock::now();
            const auto before = computingAndQueueing(schedstat);
            answered = false;
            QMetaObject::invokeMethod(
                &context, [this, sent, before] { answer(sent, before); }, Qt::QueuedConnection);
            while (!answered && !stop.stop_requested()) std::this_thread::sleep_for(5ms);
            std::this_thread::sleep_for(5ms);
        }
    }

    void answer(std::chrono::steady_clock::time_point sent, nanoseconds before) {
        const auto stoodStill = (std::chrono::steady_clock::now() - sent) - (computingAndQueueing(schedstat) - before);
        const auto rounded = std::chrono::duration_cast<std::chrono::milliseconds>(stoodStill);
        if (rounded > longest) {
            longest = rounded;
            std::ofstream(file) << longest.count() << " ms\n";
        }
        answered = true;
    }

    std::string file, schedstat;
    std::chrono::milliseconds longest{-1};
    std::atomic<bool> answered = false;
    QObject context;
    std::jthread thread; // last: it uses the others
};

Watchdog::Watchdog(std::string file) : beat_(std::make_unique<Beat>(std::move(file))) {}
Watchdog::~Watchdog() = default;

}
