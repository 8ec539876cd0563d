#include "Tacla/AppModel/AppModel.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fstream>

// A reload, reminders and observers included, and the poll that finds nothing new, with what their jobs do.
namespace {

namespace fs = std::filesystem;
using dravel::Instant;

struct StillLoop final : dravel::MainLoop {
    void post(Task) override {}
    dravel::Timer after(std::chrono::milliseconds, Task) override { return {}; }
    dravel::Timer at(Instant, Task) override { return {}; }
    Instant now() const override { return dravel::systemNow(); }
};

struct AtOnce final : dravel::Background {
    void finish() override {}
    void start(Work work, std::chrono::milliseconds) override { work({})(); }
};

struct SilentServer final : tacla::NotificationServer {
    void show(const tacla::NotificationRequest&,
              std::function<void(const Error&, const tacla::BubbleHandle&)>) override {}
    void close(const tacla::BubbleHandle&) override {}
    void ask(std::function<void(Capabilities)>) override {}
};

// A third done, a third late, a third to come, with the parts that real lines have.
void writeTasks(const fs::path& file, std::int64_t count) {
    const auto today = tacla::Day::of(dravel::systemNow());
    std::ofstream out(file);
    out << "# Tâches\n\n## À faire\n";
    for (std::int64_t number = 0; number < count; ++number) {
        const auto day = today.plusDays(number % 3 == 2 ? number % 300 + 1 : -(number % 300) - 1).description();
        out << (number % 3 == 0 ? "- [x] " : "- [ ] ") << "Réunion d'équipe n° " << number << " · " << day;
        if (number % 2 == 0) out << " 14:30";
        if (number % 3 == 0) out << " · ✅ " << day;
        out << '\n';
    }
}

struct Fixture {
    explicit Fixture(std::int64_t count) {
        writeTasks(file, count);
        model.list().read();
    }
    ~Fixture() { fs::remove_all(folder); }

    std::string pattern = (fs::temp_directory_path() / "tacla-benchmark-XXXXXX").string();
    fs::path folder = ::mkdtemp(pattern.data()), file = folder / "taches.md";
    StillLoop loop;
    AtOnce background, disk;
    SilentServer server;
    tacla::Preferences preferences{folder / "preferences.json", folder};
    tacla::AppModel model{{.loop = loop,
                           .background = background,
                           .disk = disk,
                           .preferences = preferences,
                           .folders = {folder, folder, folder, folder, folder, folder},
                           .notifications = &server},
                          file};
};

void reload(benchmark::State& state) {
    Fixture fixture(state.range(0));
    for (auto turn : state) fixture.model.list().read();
}
BENCHMARK(reload)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

void pollWithoutAChange(benchmark::State& state) {
    Fixture fixture(state.range(0));
    for (auto turn : state) fixture.model.checkFile();
}
BENCHMARK(pollWithoutAChange)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);

}
