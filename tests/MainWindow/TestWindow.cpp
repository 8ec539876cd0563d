#include "tests/MainWindow/TestWindow.h"

#include <algorithm>

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

DesktopActions TestWindow::actions() {
    const auto panel = [this](const char* what) {
        return [this, what](QWidget*, const DesktopActions::Path&, const DesktopActions::Chosen& answer) {
            asked.emplace_back(what);
            if (!chosen.empty()) answer(chosen);
        };
    };
    DesktopActions actions;
    actions.openFile = [this](const auto& path) { asked.push_back("open " + path.filename().string()); };
    actions.reveal = [this](const auto& path) { asked.push_back("reveal " + path.filename().string()); };
    actions.chooseFile = panel("choose");
    actions.createFile = panel("create");
    actions.openGuide = [this] { asked.emplace_back("guide"); };
    actions.chooseClient = [choose = panel("client")](QWidget* parent, const auto& answer) {
        choose(parent, {}, answer);
    };
    actions.home = "/home/camille";
    return actions;
}

void TestWindow::settle() {
    QCoreApplication::sendPostedEvents(nullptr, 0);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

dravel::DravelPage& TestWindow::page(Section section) {
    view->select(section);
    settle();
    return page();
}

dravel::DravelPage& TestWindow::page() {
    for (auto* page : view->findChildren<dravel::DravelPage*>())
        if (page->isVisible()) return *page;
    throw std::runtime_error("no page shows");
}

std::vector<TaskRow*> TestWindow::rows() {
    std::vector<TaskRow*> rows;
    for (auto* row : page().findChildren<TaskRow*>())
        if (row->isVisible()) rows.push_back(row);
    std::ranges::sort(rows, {}, [](const TaskRow* row) { return row->mapToGlobal(QPoint()).y(); });
    return rows;
}

TaskRow& TestWindow::row(std::string_view title) {
    for (auto* row : rows())
        if (row->task().title == title) return *row;
    throw std::runtime_error("no row " + std::string(title));
}

std::string TestWindow::shown() {
    std::string text;
    for (const auto* row : rows()) {
        const auto tags = row->accessibleDescription();
        text += (row->accessibleName() + (tags.isEmpty() ? QString() : u" ["_s + tags + u"]"_s)).toStdString() + "\n";
    }
    return text;
}

void TestWindow::focus(std::string_view title) { row(title).focus(TaskRow::Stop::check, Qt::TabFocusReason); }

bool TestWindow::tells(const std::string& text) {
    std::string all;
    for (const auto* label : view->findChildren<dravel::TextLabel*>())
        if (label->isVisible()) all += label->text().toStdString() + "\n";
    return all.find(text) != std::string::npos;
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

void TestWindow::type(const QString& text) {
    QTest::keyClicks(QApplication::focusWidget(), text);
    settle();
}

void TestWindow::click(const char* objectName) {
    QTest::mouseClick(&control<QWidget>(objectName), Qt::LeftButton);
    settle();
}

}
