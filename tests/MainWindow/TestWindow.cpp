#include "tests/MainWindow/TestWindow.h"

#include <QApplication>
#include <QTest>

namespace tacla::testing {

TestWindow::TestWindow(std::string_view tasks, std::string_view now, bool onboarding) : world(now, tasks) {
    world.start();
    if (onboarding) world.model.beginOnboarding();
    view = std::make_unique<MainView>(world.model, actions(), [this] { return world.loop.now(); });
    view->resize(980, 720);
    view->show();
    if (!QTest::qWaitForWindowActive(view.get())) throw std::runtime_error("the window does not get active");
    settle();
}

TestWindow::~TestWindow() = default;

DesktopActions TestWindow::actions() {
    const auto noted = [this](const char* what) {
        return [this, what](const DesktopActions::Path& path) { asked.push_back(what + path.filename().string()); };
    };
    const auto panel = [this](const char* what) {
        return [this, what](QWidget*, const DesktopActions::Path&, const DesktopActions::Chosen& answer) {
            asked.emplace_back(what);
            if (!chosen.empty()) answer(chosen);
        };
    };
    return {.openFile = noted("open "),
            .reveal = noted("reveal "),
            .showCopies = [this] { asked.emplace_back("copies"); },
            .openAgenda = [this] { asked.emplace_back("agenda"); },
            .openNotificationSettings = [this] { asked.emplace_back("notification settings"); },
            .chooseFile = panel("choose"),
            .createFile = panel("create"),
            .checkForUpdates = {},
            .version = "1.0",
            .home = "/home/camille"};
}

void TestWindow::settle() {
    QCoreApplication::sendPostedEvents(nullptr, 0);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

dravel::DravelPage& TestWindow::page(Section section) {
    view->select(section);
    settle();
    for (auto* page : view->findChildren<dravel::DravelPage*>())
        if (page->isVisible()) return *page;
    throw std::runtime_error("no page shows");
}

TaskColumn& TestWindow::column() {
    for (auto* column : view->findChildren<TaskColumn*>())
        if (column->isVisible()) return *column;
    throw std::runtime_error("no tasks show");
}

TaskRow& TestWindow::row(std::string_view title) {
    for (const auto& [index, row] : column().builtRows())
        if (row->task().title == title) return *row;
    throw std::runtime_error("no row " + std::string(title));
}

std::string TestWindow::shown() {
    std::string text;
    for (const auto& [index, row] : column().builtRows()) {
        const auto tags = row->accessibleDescription();
        text += (row->accessibleName() + (tags.isEmpty() ? QString() : " [" + tags + "]")).toStdString() + "\n";
    }
    return text;
}

void TestWindow::fileBecomes(std::string_view text) {
    world.save(text);
    world.model.checkFile();
    settle();
}

std::string TestWindow::focused() const {
    const auto* focus = QApplication::focusWidget();
    if (!focus) return "nothing";
    const auto name = focus->objectName().toStdString();
    const auto* row = qobject_cast<const TaskRow*>(focus->parentWidget());
    return row ? row->task().title + " " + name : name;
}

void TestWindow::press(int key, Qt::KeyboardModifiers modifiers) {
    auto* focus = QApplication::focusWidget();
    QTest::keyClick(focus ? focus : view.get(), static_cast<Qt::Key>(key), modifiers);
    settle();
}

}
