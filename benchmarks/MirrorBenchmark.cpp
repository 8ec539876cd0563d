#include "tests/CalendarSync/MirrorFixture.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

namespace tacla::testing {
namespace {

double processorSeconds() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](timeval t) { return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double peakMegabytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

// The waits between requests are skipped: what is measured is the work of this side.
void firstMirror(benchmark::State& state) {
    std::string text;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        text += "- [ ] Tâche " + std::to_string(i) + " · 2025-03-04 14:30\n";
    double spent = 0;
    const double before = peakMegabytes();
    for (auto _ : state) {
        state.PauseTiming();
        MirrorFixture world;
        const double start = processorSeconds();
        state.ResumeTiming();
        if (world.run(text)[0] != '+') state.SkipWithError("the mirror failed");
        state.PauseTiming();
        spent += processorSeconds() - start;
        state.ResumeTiming();
    }
    const auto requests = static_cast<double>(state.iterations() * state.range(0));
    state.counters["CPU ms a request"] = spent * 1000 / requests;
    state.counters["peak MB more"] = peakMegabytes() - before;
}
BENCHMARK(firstMirror)
    ->Name("first mirror")
    ->Arg(200)
    ->Arg(2'000)
    ->Arg(8'000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}
}
