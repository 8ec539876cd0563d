#include "Tacla/CalendarSync/SyncPlan.h"
#include "Tacla/TaskList/TaskFile.h"

#include <benchmark/benchmark.h>

namespace tacla {
namespace {

struct Mirrored {
    Tasks tasks;
    std::vector<Managed> managed;
};

// A file of that many tasks, with and without a time, over ten years, and its events.
Mirrored mirrored(std::int64_t count) {
    std::string text;
    for (std::int64_t i = 0; i < count; ++i) {
        const Day day = Day{2025, 1, 1}.plusDays(i * 7 % 3650);
        text += "- [ ] Tâche numéro " + std::to_string(i) + " · " + day.description() + (i % 2 ? " 14:30" : "") + "\n";
    }
    Mirrored result{TaskFile::parse(text), {}};
    for (const auto& task : result.tasks) {
        const auto event = calendarEvent(task, "Europe/Paris");
        result.managed.push_back({"event" + std::to_string(task.line), event->key, event->signature()});
    }
    return result;
}

void nothingChanged(benchmark::State& state) {
    const auto [tasks, managed] = mirrored(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(planSync(managed, tasks, {}, "Europe/Paris"));
}
BENCHMARK(nothingChanged)->Name("plan, nothing changed")->Arg(2'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

void everythingChanged(benchmark::State& state) {
    auto [tasks, managed] = mirrored(state.range(0));
    for (auto& event : managed) event.sig.clear();
    for (auto _ : state) benchmark::DoNotOptimize(planSync(managed, tasks, {}, "Europe/Paris"));
}
BENCHMARK(everythingChanged)->Name("plan, everything changed")->Arg(100'000)->Unit(benchmark::kMillisecond);

}
}
