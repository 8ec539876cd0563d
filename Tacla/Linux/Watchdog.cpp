#include "Tacla/Linux/Watchdog.h"

#include <QObject>

#include <algorithm>
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

nanoseconds total(const char* pressure) {
    std::ifstream file(pressure); // "some avg10=0.00 avg60=0.00 avg300=0.00 total=3141007954", in microseconds
    std::string line;
    std::getline(file, line);
    const auto at = line.find("total=");
    return at == line.npos ? 0ns : std::chrono::microseconds(std::stoll(line.substr(at + 6)));
}

// Time that is nobody's fault: the thread computed or queued for a processor, or the machine was too busy for somebody
// whose answer may have been waited for.
nanoseconds excused(const std::string& schedstat) {
    std::int64_t computing = 0, queueing = 0;
    std::ifstream(schedstat) >> computing >> queueing;
    const auto busy = total("/proc/pressure/cpu") + total("/proc/pressure/io");
    return nanoseconds(computing) + std::max(nanoseconds(queueing), busy);
}

}

struct Watchdog::Beat {
    explicit Beat(std::string path)
        : file(std::move(path)), schedstat("/proc/self/task/" + std::to_string(gettid()) + "/schedstat"),
          thread([this](const std::stop_token& stop) { run(stop); }) {}

    void run(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            const auto sent = std::chrono::steady_clock::now();
            const auto before = excused(schedstat);
            answered = false;
            QMetaObject::invokeMethod(
                &context, [this, sent, before] { answer(sent, before); }, Qt::QueuedConnection);
            while (!answered && !stop.stop_requested()) std::this_thread::sleep_for(5ms);
            std::this_thread::sleep_for(5ms);
        }
    }

    void answer(std::chrono::steady_clock::time_point sent, nanoseconds before) {
        const auto stoodStill = (std::chrono::steady_clock::now() - sent) - (excused(schedstat) - before);
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
