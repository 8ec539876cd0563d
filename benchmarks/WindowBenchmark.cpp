// How fast the window is with long lists: page switch and refresh with 10,000 tasks, a frame while scrolling, and the
// done page with 100,000. Every measure includes laying out and painting what shows.
#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/DravelUI/Look.h"
#include "Tacla/MainWindow/MainView.h"
#include "tests/support/ModelWorld.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QLineEdit>
#include <QScrollBar>
#include <QShortcut>

namespace {

using namespace tacla;

std::string tasks(int count, bool done) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        const Day day = Day{2026, 11, 24}.plusDays(done ? -i / 40 : i % 400 - 100);
        text += done ? "- [x] " : "- [ ] ";
        text += i % 7 == 0 ? "❗ " : "";
        text += "Relancer la Librairie Quai Sud pour le dossier numéro " + std::to_string(i);
        if (i % 11 == 0) text += ", avec un titre assez long pour prendre une deuxième ligne de la carte, au moins";
        text += " · " + day.description() + (i % 3 == 0 ? " 14:30" : "");
        text += done ? " · ✅ " + day.description() + "\n" : "\n";
    }
    return text;
}

struct Screen {
    explicit Screen(const std::string& text) : world("2026-11-24 10:40", text) {
        world.start();
        view.emplace(world.model, DesktopActions{}, [this] { return world.loop.now(); });
        view->setAttribute(Qt::WA_DontShowOnScreen);
        view->resize(980, 720);
        view->show();
        frame();
    }
    void frame() {
        QCoreApplication::sendPostedEvents();
        view->render(&picture);
    }
    dravel::DravelPage& page(Section section) {
        view->select(section);
        frame();
        for (auto* page : view->findChildren<dravel::DravelPage*>())
            if (page->isVisible()) return *page;
        std::abort();
    }
    testing::ModelWorld world;
    std::optional<MainView> view;
    QImage picture{980, 720, QImage::Format_ARGB32_Premultiplied};
};

void openWindow(benchmark::State& state) {
    const std::string text = tasks(static_cast<int>(state.range(0)), false);
    for (auto _ : state) Screen screen(text);
}
BENCHMARK(openWindow)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void switchPage(benchmark::State& state) {
    Screen screen(tasks(10000, false));
    screen.page(Section::upcoming);
    for (auto _ : state) {
        screen.page(Section::late);
        screen.page(Section::upcoming);
    }
}
BENCHMARK(switchPage)->Unit(benchmark::kMillisecond); // two switches

// As after an edit: the model reads the file again and one task is another. The reload is part of it.
void reloadAndRefresh(benchmark::State& state) {
    const auto section = static_cast<Section>(state.range(0));
    const std::string text = tasks(10000, false);
    Screen screen(text);
    screen.page(section);
    bool other = false;
    for (auto _ : state) {
        other = !other;
        testing::writeBytes(screen.world.file, other ? text + "- [ ] Pain · 2026-11-20\n" : text);
        screen.world.list().read();
        screen.frame();
    }
    state.SetLabel(std::string(rawValue(section)));
}
BENCHMARK(reloadAndRefresh)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

// Nothing but the minute is new.
void minute(benchmark::State& state) {
    Screen screen(tasks(10000, false));
    screen.page(static_cast<Section>(state.range(0)));
    for (auto _ : state) {
        screen.world.model.changed();
        screen.frame();
    }
}
BENCHMARK(minute)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

void scrollFrame(benchmark::State& state) {
    Screen screen(tasks(10000, false));
    auto* bar = screen.page(Section::late).verticalScrollBar();
    const int step = static_cast<int>(state.range(0));
    for (auto _ : state) {
        bar->setValue(bar->value() + step < bar->maximum() ? bar->value() + step : 0);
        screen.frame();
    }
}
BENCHMARK(scrollFrame)->Arg(40)->Arg(700)->Unit(benchmark::kMillisecond);

// A word grows and goes, a letter at a key press.
void findKeyPress(benchmark::State& state) {
    Screen screen(tasks(static_cast<int>(state.range(0)), false));
    for (auto* shortcut : screen.view->findChildren<QShortcut*>())
        if (shortcut->key() == QKeySequence(Qt::CTRL | Qt::Key_F)) Q_EMIT shortcut->activated();
    auto& words = *screen.view->findChild<QLineEdit*>(QStringLiteral("find.words"));
    const QString typed = QStringLiteral("quai dossier 123");
    qsizetype length = 0;
    for (auto _ : state) {
        length = length % typed.size() + 1;
        words.setText(typed.left(length));
        screen.frame();
    }
}
BENCHMARK(findKeyPress)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void openDonePage(benchmark::State& state) {
    const std::string text = tasks(100000, true);
    for (auto _ : state) {
        state.PauseTiming();
        auto screen = std::make_unique<Screen>(text);
        state.ResumeTiming();
        screen->page(Section::done);
        state.PauseTiming();
        screen.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(openDonePage)->Unit(benchmark::kMillisecond)->Iterations(3);

}

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("TZ", "Europe/Paris");
    QApplication application(argc, argv);
    dravel::installLook(application, dravel::Appearance::light);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
