#include "DravelKit/StandardMenu/StandardMenu.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QTest>

using namespace dravel;
using namespace Qt::StringLiterals;

namespace {

struct Window {
    QMainWindow window;
    QLineEdit* field = new QLineEdit;
    std::string story;
    bool canUndo = true;

    Window() {
        const auto tell = [this](const char* word) { return [this, word] { story += std::string(word) + " "; }; };
        StandardMenu::install(
            window, {u"R&D"_s, u"1.0"_s, u"© Dravel"_s, {{u"Qt"_s, u"LGPL"_s}}},
            {.settings = tell("settings"), .quit = tell("quit"), .undo = tell("undo"), .canUndo = [this] {
                 return canUndo;
             }});
        window.setCentralWidget(field);
        window.show();
        window.activateWindow();
        (void)QTest::qWaitForWindowActive(&window);
        field->setFocus();
    }
    QAction& entry(const char* name) { return *window.findChild<QAction*>(QString::fromUtf8(name)); }
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
    shown.entry("Annuler").trigger(); // the field has nothing to take back
    EXPECT_EQ(std::exchange(shown.story, ""), "undo ");
    QTest::keyClicks(shown.field, u"Pain"_s);
    EXPECT_EQ(shown.offered(), std::pair(true, false));
    shown.entry("Annuler").trigger();
    EXPECT_EQ(shown.field->text(), QString());
    EXPECT_EQ(shown.offered(), std::pair(true, true));
    shown.entry("Rétablir").trigger();
    EXPECT_EQ(shown.field->text(), u"Pain"_s);
    EXPECT_EQ(shown.story, "");

    shown.field->clearFocus();
    EXPECT_EQ(shown.offered(), std::pair(true, false));
    shown.canUndo = false;
    EXPECT_EQ(shown.offered(), std::pair(false, false));
    for (const char* name : {"Annuler", "Coller", "Réglages…", "Quitter R&D"}) shown.entry(name).trigger();
    EXPECT_EQ(shown.story, "undo settings quit ");
    shown.field->setFocus();
    QTest::keyClick(shown.field, Qt::Key_F10);
    auto* first = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->title(), u"&R&&D"_s);
    QTest::keyClick(first, Qt::Key_Escape);
    QTest::keyClick(shown.window.menuBar(), Qt::Key_Escape);
    EXPECT_TRUE(shown.field->hasFocus()) << "given back";
    shown.entry("À propos de R&D").trigger();
    EXPECT_NE(shown.window.findChild<AboutPanel*>(), nullptr);
}
