#pragma once

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/DravelUI/Fields.h"
#include "DravelKit/DravelUI/TextField.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "Tacla/MainWindow/MainView.h"
#include "Tacla/MainWindow/Rows/TaskRow.h"
#include "tests/support/ModelWorld.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QTest>

namespace tacla::testing {

using namespace Qt::StringLiterals;
using dravel::TextField;

// The window's content over a living model on virtual time, shown and active.
struct TestWindow {
    explicit TestWindow(std::string_view tasks, std::string_view now = "2026-11-24 10:40", bool onboarding = false);

    DesktopActions actions(); // that write down what they were asked

    dravel::DravelPage& page(Section);    // shows it first
    dravel::DravelPage& page();           // that shows
    std::vector<TaskRow*> rows();         // that are built there, top to bottom
    TaskRow& row(std::string_view title); // one of them
    std::string shown();                  // all of them: "title [tags]" a line
    void focus(std::string_view title);   // the row's check button, as the Tab key does
    template <class Control>
    Control& control(const char* objectName) {
        auto* found = view->findChild<Control*>(QString::fromLatin1(objectName));
        if (!found) throw std::runtime_error(std::string("no ") + objectName);
        return *found;
    }
    bool shows(const char* objectName) { return control<QWidget>(objectName).isVisible(); }
    TextField& field(const char* objectName) { return control<TextField>(objectName); }
    bool tells(const std::string& text);     // among all that shows, which ends each of its texts with a line feed
    void fileBecomes(std::string_view text); // as an editor saves it, and the poll sees it
    std::string focused() const;             // "title check", "title menu" or the control's object name
    void press(int key, Qt::KeyboardModifiers = {});
    void type(const QString&);          // where the focus is
    void click(const char* objectName); // with the mouse
    void settle();                      // lets the event loop do what was put off

    ModelWorld world;
    std::vector<std::string> asked;
    std::filesystem::path chosen; // what the file panel answers
    std::unique_ptr<MainView> view;
};

}
