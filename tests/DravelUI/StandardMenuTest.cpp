#include "DravelKit/StandardMenu/StandardMenu.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDateEdit>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QTest>
#include <QVBoxLayout>

using namespace dravel;
using namespace Qt::StringLiterals;

namespace {

struct Window {
    QMainWindow window;
    QLineEdit* field = new QLineEdit;
    QDateEdit* date = new QDateEdit;
    std::string story;
    bool canUndo = true;

    Window() {
        const auto tell = [this](const char* word) { return [this, word] { story += std::string(word) + " "; }; };
        StandardMenu::install(
            window, {u"R&D"_s, u"1.0"_s, u"© Dravel"_s, {{u"Qt"_s, u"LGPL"_s}}},
            {.settings = tell("settings"), .quit = tell("quit"), .undo = tell("undo"), .canUndo = [this] {
                 return canUndo;
             }});
        auto* content = new QWidget;
        auto* column = new QVBoxLayout(content);
        column->addWidget(field);
        column->addWidget(date);
        window.setCentralWidget(content);
        window.show();
        window.activateWindow();
        (void)QTest::qWaitForWindowActive(&window);
        field->setFocus();
    }
    QAction& entry(const char* name) { return *window.findChild<QAction*>(QString::fromUtf8(name)); }
    void choose(const char* name) { entry(name).trigger(); }
    // Whether "Annuler" and "Rétablir" can be chosen in the open menu.
    std::pair<bool, bool> offered() {
        auto* menu = qobject_cast<QMenu*>(entry("Annuler").parent());
        Q_EMIT menu->aboutToShow();
        const std::pair enabled(entry("Annuler").isEnabled(), entry("Rétablir").isEnabled());
        Q_EMIT menu->aboutToHide();
        return enabled;
    }
};

}

TEST(StandardMenu, EditsTheFieldThatHasTheFocusAndElseUndoesInTheProgram) {
    Window shown;
    shown.choose("Annuler"); // the field has nothing to take back
    EXPECT_EQ(std::exchange(shown.story, ""), "undo ");
    QTest::keyClicks(shown.field, u"Pain"_s);
    EXPECT_EQ(shown.offered(), std::pair(true, false));
    shown.choose("Annuler");
    EXPECT_EQ(shown.field->text(), QString());
    EXPECT_EQ(shown.offered(), std::pair(true, true));
    shown.choose("Rétablir");
    EXPECT_EQ(shown.field->text(), u"Pain"_s);
    shown.date->setFocus();
    EXPECT_EQ(shown.story, "");

    shown.date->clearFocus();
    EXPECT_EQ(shown.offered(), std::pair(true, false));
    shown.canUndo = false;
    EXPECT_EQ(shown.offered(), std::pair(false, false));
    for (const char* name : {"Annuler", "Coller", "Réglages…", "Quitter R&D"}) shown.choose(name);
    EXPECT_EQ(shown.story, "undo settings quit ");
    shown.field->setFocus();
    QTest::keyClick(shown.field, Qt::Key_F10);
    auto* first = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->title(), u"&R&&D"_s);
    QTest::keyClick(first, Qt::Key_Escape);
    QTest::keyClick(shown.window.menuBar(), Qt::Key_Escape);
    EXPECT_TRUE(shown.field->hasFocus()) << "given back";
    shown.choose("À propos de R&D");
    EXPECT_NE(shown.window.findChild<AboutPanel*>(), nullptr);
}
