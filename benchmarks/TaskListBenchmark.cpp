#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/MomentWords.h"
#include "Tacla/TaskList/TaskFile.h"
#include "Tacla/TaskList/TaskFinder.h"
#include "Tacla/TaskList/TaskLines.h"
#include "Tacla/TaskList/TaskViews.h"

#include <benchmark/benchmark.h>

#include <algorithm>

using namespace tacla;

namespace {

constexpr Day today{2026, 11, 21};

std::string list(std::int64_t tasks) {
    std::string text = "# Tâches\n\n## À faire\n";
    for (std::int64_t i = 0; i < tasks; ++i)
        text += std::string(i % 5 == 0 ? "- [x] " : "- [ ] ") + "Réserver l'hôtel n° " + std::to_string(i) +
                " à Angoulême · " + today.plusDays(i % 60 - 30).description() + (i % 3 == 0 ? " 14:30\n" : "\n");
    return text;
}

// Time per task beside the time per call.
void perTask(benchmark::State& state) {
    state.counters["per_task"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void validate(benchmark::State& state) {
    const auto text = list(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(dravel::isValidUtf8(text));
    perTask(state);
}

void scan(benchmark::State& state) {
    const auto text = list(state.range(0));
    for (auto _ : state) {
        std::int64_t open = 0;
        forEachTask(text, [&](const TaskLine& task) { open += task.done ? 0 : 1; });
        benchmark::DoNotOptimize(open);
    }
    perTask(state);
}

void parse(benchmark::State& state) {
    const auto text = list(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(TaskFile::parse(text));
    perTask(state);
}

void copy(benchmark::State& state) {
    const auto text = list(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(std::string(text));
}

template <class Edit>
void edit(benchmark::State& state, Edit change) {
    const auto text = list(state.range(0));
    const auto key = TaskFile::parse(text)[static_cast<std::size_t>(state.range(0)) / 2 + 1].key;
    for (auto _ : state) benchmark::DoNotOptimize(change(text, key));
}

void add(benchmark::State& state) {
    edit(state, [](auto& text, auto&) { return TaskFile::add(text, "Pain", today, {}, false); });
}
void setDone(benchmark::State& state) {
    edit(state, [](auto& text, auto& key) { return TaskFile::setDone(text, key, true, today); });
}
void rename(benchmark::State& state) {
    edit(state, [](auto& text, auto& key) { return TaskFile::rename(text, key, "Pain"); });
}
void reschedule(benchmark::State& state) {
    edit(state, [](auto& text, auto& key) { return TaskFile::reschedule(text, key, today, {}, today); });
}
void removeTask(benchmark::State& state) {
    edit(state, [](auto& text, auto& key) { return TaskFile::remove(text, key); });
}

template <class View>
void view(benchmark::State& state, View make) {
    const TaskList tasks(list(state.range(0)));
    const auto now = today.date() + std::chrono::hours(12);
    for (auto _ : state) benchmark::DoNotOptimize(make(tasks, now));
    perTask(state);
}

void lateView(benchmark::State& state) {
    view(state, [](auto& tasks, auto now) { return late(tasks, now); });
}
void todaysView(benchmark::State& state) {
    view(state, [](auto& tasks, auto now) { return todays(tasks, now); });
}
void upcomingView(benchmark::State& state) {
    view(state, [](auto& tasks, auto) { return upcomingByDay(tasks, today); });
}
void doneView(benchmark::State& state) {
    view(state, [](auto& tasks, auto) { return doneByDay(tasks, today); });
}
void openCountView(benchmark::State& state) {
    view(state, [](auto& tasks, auto now) { return openCount(tasks, now); });
}

void index(benchmark::State& state) {
    const TaskList tasks(list(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(TaskFinder(tasks));
    perTask(state);
}
// Three ways: letters of every title, a word of few, and one that is nowhere.
void find(benchmark::State& state, std::string_view typed) {
    const TaskFinder finder(TaskList(list(state.range(0))));
    for (auto _ : state) benchmark::DoNotOptimize(finder.find(typed));
    perTask(state);
}

void readMoment(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(
            momentWords("Réserver l'hôtel n° 12 à Angoulême le 12 janvier à 14 h 30", today, {10, 0}));
}

}

BENCHMARK(parse)->RangeMultiplier(10)->Range(1'000, 1'000'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(validate)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(scan)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(copy)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(add)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(setDone)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(rename)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(reschedule)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(removeTask)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(lateView)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(todaysView)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(upcomingView)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(doneView)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(openCountView)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(index)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(find, all, "e")->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(find, few, "hote 999")->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(find, none, "ango zut")->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(readMoment)->Unit(benchmark::kMicrosecond);
