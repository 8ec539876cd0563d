#include "Tacla/MainWindow/Rows/TaskControls.h"
#include "tests/MainWindow/TestWindow.h"

#include <QScrollBar>

namespace tacla::testing {

// The stops of the Tab key from the one that has focus to the last one named. A date has three parts but is one stop.
static std::string stopsUntil(TestWindow& window, const std::string& last) {
    std::string path;
    for (int i = 0; i < 30; ++i) {
        if (!path.ends_with(window.focused() + ", ")) path += window.focused() + ", ";
        if (window.focused() == last) break;
        window.press(Qt::Key_Tab);
    }
    return path;
}

// The entries of a row's menu, which a click opens.
static QList<QAction*> menuOf(TestWindow& window, std::string_view title) {
    QTest::mouseClick(window.row(title).findChild<QWidget*>(u"menu"_s), Qt::LeftButton);
    return window.row(title).findChild<QMenu*>()->actions();
}

TEST(TaskRow, PostponesFromTheDayOfTheClickNotOfTheLastReload) {
    TestWindow window("- [ ] Pain · 2026-11-20\n", "2026-11-24 23:59");
    const auto toTomorrow = menuOf(window, "Pain").front();
    window.world.loop.setClock(moment("2026-11-25 00:01"));
    toTomorrow->trigger();
    EXPECT_EQ(window.world.text(), "- [ ] Pain · 2026-11-26 · due 2026-11-20\n");
}

TEST(TaskRow, DoesADoneTaskAgainAndCopiesItsLine) {
    const std::string done = "- [x] ❗ Pain · 2026-11-24 18:00 · ✅ 2026-11-24\n";
    TestWindow window(done);
    window.focus("❗ Pain");
    EXPECT_TRUE(window.view->copyTask());
    EXPECT_EQ(QApplication::clipboard()->text().toStdString() + "\n", done);
    window.press(Qt::Key_R);
    QTest::keyClick(window.row("❗ Pain").findChild<QMenu*>(), Qt::Key_L);
    EXPECT_EQ(window.world.text(), done + "- [ ] ❗ Pain · 2026-11-30 18:00\n");
}

TEST(TaskRow, ActsOnTheTaskThatItShowedWhenItWasPressed) {
    const char* nextWeek = "- [ ] Pain · 2026-11-25\n";
    TestWindow window(std::string("- [ ] Pain · 2026-11-24\n") + nextWeek);
    const auto remove = menuOf(window, "Pain").back();
    window.fileBecomes(nextWeek); // the row shows this one now
    remove->trigger();
    EXPECT_EQ(window.world.text(), nextWeek);

    window.fileBecomes(std::string("- [ ] Pain · 2026-11-24\n") + nextWeek);
    auto* check = window.row("Pain").findChild<QWidget*>(u"check"_s);
    QTest::mousePress(check, Qt::LeftButton);
    window.fileBecomes(nextWeek);
    QTest::mouseRelease(check, Qt::LeftButton);
    EXPECT_EQ(window.world.text(), nextWeek);
}

TEST(TaskEditor, SavesWhatWasTypedAndGivesTheFocusBack) {
    TestWindow window("- [ ] ❗ Pain · 2026-11-24\n- [ ] Vin · 2026-11-24 18:00\n");
    window.focus("❗ Pain");
    window.press(Qt::Key_Return);
    EXPECT_EQ(window.focused(), "editor.title");
    EXPECT_EQ(window.field("editor.title").text().toStdString(), "Pain");
    window.field("editor.title").setText(u"Pain complet"_s);
    window.click("editor.hasTime");
    window.press(Qt::Key_Return);
    EXPECT_EQ(window.world.text(), "- [ ] ❗ Pain complet · 2026-11-24 10:00\n- [ ] Vin · 2026-11-24 18:00\n");
    EXPECT_EQ(window.focused(), "❗ Pain complet check") << "the row that was renamed, now late";

    window.press(Qt::Key_F2);
    const int height = window.row("❗ Pain complet").height();
    window.field("editor.title").end(false);
    window.type(u" pour demain 9h"_s);
    EXPECT_GT(window.row("❗ Pain complet").height(), height) << "the words are offered";
    window.press(Qt::Key_Tab);
    EXPECT_EQ(window.row("❗ Pain complet").height(), height);
    window.press(Qt::Key_Return);
    EXPECT_EQ(window.world.text(), "- [ ] ❗ Pain complet · 2026-11-25 09:00\n- [ ] Vin · 2026-11-24 18:00\n");
}

TEST(TaskEditor, SurvivesAReloadWhileTheTaskDoes) {
    TestWindow window("- [ ] Pain · 2026-11-24\n- [ ] Vin · 2026-11-24\n");
    auto& row = window.row("Vin");
    row.startEditing();
    auto& title = window.field("editor.title");
    title.setText(u"Vin rouge"_s);
    title.setCursorPosition(3);

    window.fileBecomes("# Titre\n- [ ] Eau · 2026-11-20\n- [x] Pain · 2026-11-24\n- [ ] Vin · 2026-11-21\n");
    EXPECT_EQ(&window.row("Vin"), &row) << "the same row, now in the card of the late ones";
    EXPECT_TRUE(row.isEditing());
    EXPECT_EQ(window.focused(), "editor.title");
    EXPECT_EQ(title.text().toStdString(), "Vin rouge");
    EXPECT_EQ(title.cursorPosition(), 3);

    window.fileBecomes("- [ ] Eau · 2026-11-20\n- [x] Pain · 2026-11-24\n- [ ] Autre chose · 2026-11-21\n");
    EXPECT_EQ(window.shows("editor.note"), true) << "the task is gone, what was typed is not";
    EXPECT_EQ(title.text().toStdString(), "Vin rouge");
    const auto text = window.world.text();
    window.press(Qt::Key_Return);
    EXPECT_EQ(window.world.text(), text);
    EXPECT_EQ(title.text().toStdString(), "Vin rouge");
    window.press(Qt::Key_Escape);
    EXPECT_EQ(window.view->findChild<TaskEditor*>(), nullptr);
    EXPECT_EQ(window.rows().size(), 3U);
}

TEST(TaskEditor, KeepsWhatWasTypedUntilItIsInTheFile) {
    TestWindow window("- [ ] Pain · 2026-11-24 9:05\n");
    window.row("Pain").startEditing();
    auto& title = window.field("editor.title");
    title.setText(u"Sel"_s);
    std::filesystem::rename(window.world.file, window.world.folder / "aside");
    window.press(Qt::Key_Return);
    EXPECT_EQ(title.text().toStdString(), "Sel");
    EXPECT_TRUE(window.control<dravel::TextLabel>("editor.note").text().startsWith(u"Impossible d'écrire "_s));
    std::filesystem::rename(window.world.folder / "aside", window.world.file);
    window.press(Qt::Key_Return);
    EXPECT_EQ(window.world.text(), "- [ ] Sel · 2026-11-24 9:05\n");
    EXPECT_EQ(window.view->findChild<TaskEditor*>(), nullptr);
}

TEST(TaskRow, ChecksOneTaskWithADoubleClick) {
    for (const int later : {80, 200, 350}) {
        TestWindow window("- [ ] Pain · 2026-11-20\n- [ ] Vin · 2026-11-21\n- [ ] Sel · 2026-11-22\n");
        window.page(Section::late);
        const auto click = [&](const char* title, int at) {
            QTest::lastMouseTimestamp = at;
            QTest::mouseClick(window.row(title).findChild<QWidget*>(u"check"_s), Qt::LeftButton);
            window.settle();
        };
        click("Pain", 100'000);
        click("Vin", 100'000 + later); // where the first one was
        EXPECT_EQ(window.rows().size(), 2U) << later;
        click("Vin", 103'000);
        EXPECT_EQ(window.rows().size(), 1U) << later;
    }
}

TEST(TaskColumn, HandsTheFocusOnWhenTheRowLeaves) {
    TestWindow window("- [ ] Pain · 2026-11-20\n- [ ] Vin · 2026-11-21\n- [ ] Sel · 2026-11-22\n");
    window.page(Section::late);
    window.focus("Vin");
    window.press(Qt::Key_Menu);
    auto* menu = window.row("Vin").findChild<QMenu*>();
    for (const auto key : {Qt::Key_Up, Qt::Key_Return}) QTest::keyClick(menu, key);
    EXPECT_EQ(window.focused(), "Sel check");
    EXPECT_NE(window.view->findChild<QWidget*>(u"focusRing"_s), nullptr) << "deleted by keys: the ring goes on";
    window.press(Qt::Key_Space);
    EXPECT_EQ(window.focused(), "Pain check") << "none below: the one above";
    window.fileBecomes("- [ ] Eau · 2026-11-19\n- [ ] Pain · 2026-11-20\n- [ ] Thé · 2026-11-22\n");
    EXPECT_EQ(window.focused(), "Pain check");
}

TEST(TaskColumn, IsWalkedThroughByKeyboard) {
    TestWindow window("- [ ] Pain · 2026-11-24\n- [ ] Vin · 2026-11-24\n- [ ] Devis · 2026-11-25\n");
    window.field("add.title").setFocus(Qt::TabFocusReason);
    EXPECT_EQ(stopsUntil(window, "section.today"),
              "add.title, add.date, add.hasTime, add.strong, add.button, "
              "Pain check, Pain menu, Vin check, Vin menu, Devis check, Devis menu, section.today, ");
    window.row("Pain").focus(TaskRow::Stop::menu, Qt::TabFocusReason);
    for (const auto& [key, focused] : {std::pair{Qt::Key_Down, "Vin menu"},
                                       {Qt::Key_Down, "Devis menu"},
                                       {Qt::Key_Up, "Vin menu"},
                                       {Qt::Key_Backtab, "Vin check"}}) {
        window.press(key);
        EXPECT_EQ(window.focused(), focused);
    }
    window.focus("Pain");
    window.press(Qt::Key_F10, Qt::ShiftModifier);
    EXPECT_NE(window.row("Pain").findChild<QMenu*>(), nullptr);
}

TEST(TaskEditor, IsWalkedThroughByKeyboard) {
    TestWindow window("- [ ] Pain · 2026-11-24 18:00\n- [ ] Vin · 2026-11-24 18:00\n");
    window.focus("Pain");
    window.press(Qt::Key_F2);
    EXPECT_EQ(stopsUntil(window, "Vin check"), "editor.title, editor.date, editor.hasTime, editor.time, editor.cancel, "
                                               "editor.save, Vin check, ");
    window.press(Qt::Key_Backtab);
    EXPECT_EQ(window.focused(), "editor.save");
    window.press(Qt::Key_Escape);
    EXPECT_EQ(window.focused(), "Pain check");
}

static std::string tasks(int count) {
    std::string file;
    for (int i = 0; i < count; ++i) file += "- [ ] Tâche " + std::to_string(i) + " · 2026-11-20\n";
    return file;
}

TEST(TaskColumn, BuildsOnlyTheRowsInViewOfALongList) {
    TestWindow window(tasks(5000));
    auto& page = window.page(Section::late);
    EXPECT_LT(window.rows().size(), 30u);
    const auto scrollTo = [&](int place) {
        page.verticalScrollBar()->setValue(place);
        window.settle();
    };
    scrollTo(page.verticalScrollBar()->maximum());
    EXPECT_EQ(window.rows().back()->task().title, "Tâche 4999");
    EXPECT_LT(window.rows().size(), 30u);
    scrollTo(page.verticalScrollBar()->maximum() / 2);
    window.focus("Tâche 2500");
    scrollTo(0);
    EXPECT_EQ(window.focused(), "Tâche 2500 check") << "it keeps the focus out of view";
    window.press(Qt::Key_Down);
    EXPECT_EQ(window.focused(), "Tâche 2501 check");
}

TEST(TaskColumn, StaysWhereItWasScrolledToWhenLinesComeAbove) {
    TestWindow window(tasks(300));
    auto& page = window.page(Section::late);
    page.verticalScrollBar()->setValue(6000);
    window.settle();
    auto& row = *window.rows().at(8);
    const int y = row.mapTo(&page, QPoint()).y();
    const auto title = row.task().title;
    window.fileBecomes("- [ ] Plus tôt, avec un titre si long qu'il prend plusieurs lignes de la carte, et même encore "
                       "un peu plus pour en être tout à fait sûr · 2026-11-18\n" +
                       tasks(300));
    EXPECT_EQ(&window.row(title), &row);
    EXPECT_EQ(row.mapTo(&page, QPoint()).y(), y);
}

TEST(TaskColumn, TakesAnyTitleAndDay) {
    const std::string endless(10000, 'a');
    TestWindow window("- [ ] " + endless + " · 2026-11-24 23:00\n- [ ] <b>R&D</b> <img src=x> · 2026-11-24\n" +
                      "- [ ] שלום עולם · 2026-11-24\n- [ ] Zéro · 0000-01-01\n- [ ] Février · 2026-02-30\n");
    EXPECT_GT(window.row(endless).height(), 1000);
    EXPECT_EQ(window.row("<b>R&D</b> <img src=x>").accessibleName().toStdString(), "<b>R&D</b> <img src=x>");
    for (const char* title : {"Zéro", "Février"}) {
        window.row(title).startEditing();
        window.row(title).cancelEdit();
    }
    int bottom = 0;
    for (const auto* row : window.rows()) {
        const int top = row->mapTo(window.view.get(), QPoint()).y();
        EXPECT_GE(top, bottom) << row->task().title.substr(0, 20);
        bottom = top + row->height();
    }
}

}
