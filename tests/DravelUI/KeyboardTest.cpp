#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/Fields.h"
#include "DravelKit/DravelUI/SettingsCard.h"
#include "DravelKit/DravelUI/SidebarList.h"
#include "DravelKit/DravelUI/TextLabel.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QTest>
#include <QVBoxLayout>

using namespace dravel;
using namespace Qt::StringLiterals;

namespace {

// A window with the given widgets below each other, shown and active.
struct Window {
    QWidget widget;

    explicit Window(std::initializer_list<QWidget*> content) {
        auto* column = new QVBoxLayout(&widget);
        for (QWidget* one : content) column->addWidget(one);
        widget.resize(400, 300);
        widget.show();
        widget.activateWindow();
        (void)QTest::qWaitForWindowActive(&widget);
    }
    void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    bool ringShows() const {
        const auto* ring = widget.findChild<FocusRing*>();
        return ring && ring->isVisible();
    }
};

QAccessibleInterface& reader(QWidget& widget) { return *QAccessible::queryAccessibleInterface(&widget); }

}

TEST(Keyboard, PressesButtonsAndSwitchesWithSpaceAndReturn) {
    auto* button = new Button(Button::Kind::neutral, u"Ouvrir"_s);
    auto* one = new Switch(u"Heure"_s);
    Window window({button, one});
    int clicks = 0;
    QObject::connect(button, &QAbstractButton::clicked, [&] { ++clicks; });
    button->setFocus(Qt::TabFocusReason);
    for (const auto key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) window.press(key);
    EXPECT_EQ(clicks, 3);
    for (const auto key : {Qt::Key_Tab, Qt::Key_Space}) window.press(key);
    EXPECT_TRUE(one->isChecked());
    window.press(Qt::Key_Return);
    EXPECT_FALSE(one->isChecked());
}

TEST(Keyboard, ShowsTheFocusRingForTheKeyboardOnlyAndAClickLeavesTheFocus) {
    auto* first = new Button(Button::Kind::neutral, u"Ouvrir"_s);
    auto* second = new Chip(u"Demain"_s);
    Window window({first, second});
    first->setFocus(Qt::OtherFocusReason);
    EXPECT_FALSE(window.ringShows());
    window.press(Qt::Key_Tab);
    ASSERT_TRUE(window.ringShows());
    auto* ring = window.widget.findChild<FocusRing*>();
    EXPECT_EQ(ring->geometry(), second->geometry().adjusted(-4, -4, 4, 4));
    second->move(second->x() + 30, second->y() + 5);
    EXPECT_EQ(ring->geometry(), second->geometry().adjusted(-4, -4, 4, 4));
    first->setFocus(Qt::MouseFocusReason);
    EXPECT_FALSE(window.ringShows());
    QTest::mouseClick(second, Qt::LeftButton);
    EXPECT_TRUE(first->hasFocus());
}

TEST(Keyboard, PicksADayFromThePopupByKeysAndByClicks) {
    auto* field = new DateField(u"Jour"_s);
    field->setDate({2026, 11, 26});
    Window window({field});
    const auto pick = [&](std::initializer_list<Qt::Key> keys) {
        field->setFocus();
        QTest::keyClick(field, Qt::Key_Down, Qt::AltModifier);
        for (const auto key : keys) window.press(key);
        return field->date().toString(Qt::ISODate).toStdString();
    };
    EXPECT_EQ(pick({Qt::Key_Down, Qt::Key_Right, Qt::Key_Return}), "2026-12-04");
    EXPECT_EQ(pick({Qt::Key_PageUp, Qt::Key_Home, Qt::Key_Left, Qt::Key_Space}), "2026-10-31");
    EXPECT_EQ(pick({Qt::Key_PageDown, Qt::Key_Return}), "2026-11-30"); // no 31st there
    EXPECT_EQ(pick({Qt::Key_Up, Qt::Key_Escape}), "2026-11-30");
    EXPECT_FALSE(field->popup());

    QTest::mouseClick(field, Qt::LeftButton, {}, QPoint(14, 14));
    ASSERT_TRUE(field->popup());
    QTest::mouseClick(field->popup()->findChild<QWidget*>(u"nextMonth"_s), Qt::LeftButton);
    QTest::mouseClick(field->popup()->findChild<QWidget*>(u"2027-01-03"_s), Qt::LeftButton);
    EXPECT_EQ(field->date(), QDate(2027, 1, 3));
}

TEST(Keyboard, MovesThroughTheSidebarWithOneStopOfTab) {
    auto* list = new SidebarList(u"Sections"_s);
    for (const auto& title : {u"Aujourd'hui"_s, u"En retard"_s, u"Réglages"_s}) list->addRow(Symbol::sun, title, title);
    auto* after = new Button(Button::Kind::neutral, u"Ouvrir"_s);
    Window window({list, after});
    std::vector<int> said;
    QObject::connect(list, &SidebarList::currentChanged, [&](int index) { said.push_back(index); });
    list->findChild<QWidget*>(u"Aujourd'hui"_s)->setFocus(Qt::TabFocusReason);
    for (const auto key : {Qt::Key_Down, Qt::Key_End, Qt::Key_Down, Qt::Key_Up, Qt::Key_Home}) window.press(key);
    EXPECT_EQ(said, (std::vector{1, 2, 1, 0}));
    window.press(Qt::Key_Tab);
    EXPECT_TRUE(after->hasFocus());
    window.press(Qt::Key_Backtab);
    EXPECT_EQ(QApplication::focusWidget()->objectName(), u"Aujourd'hui"_s);
}

TEST(TextLabel, LetsItsTextBeSelectedAndCopied) {
    auto* label = new TextLabel(Theme::Typography::callout, Theme::text, u"/home/léa/taches.md"_s);
    label->setSelectable(true);
    Window window({label});
    QTest::mousePress(label, Qt::LeftButton, {}, QPoint(0, label->height() / 2));
    const QPointF end(textWidth(Theme::Typography::callout, u"/home"_s), label->height() / 2.0);
    QMouseEvent move(QEvent::MouseMove, end, label->mapToGlobal(end), Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(label, &move);
    EXPECT_EQ(label->selectedPart(), u"/home"_s);
    QTest::keyClick(label, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), u"/home"_s);
    QTest::keyClick(label, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(label->selectedPart(), label->text());
    label->setSelectable(false);
    label->clearFocus();
    QTest::mouseDClick(label, Qt::LeftButton);
    QApplication::sendEvent(label, &move);
    EXPECT_EQ(label->selectedPart(), QString());
}

// Of the controls whose role no story asks for: it finds the others by role and name, as who cannot see does.
TEST(Accessibility, GivesWhatIsPaintedARoleAndAName) {
    Chip chip(u"Demain"_s);
    TimeField time(u"Heure"_s);
    ProgressRing ring;
    ring.setProgress(2, 6, u"2 faites · 3 en retard"_s);
    SidebarBadge badge;
    badge.setContent({Symbol::checkLg, u"7 à faire"_s, u"taches.md"_s});
    SettingRow row(Symbol::bell, u"Tester"_s);
    SidebarList list(u"Sections"_s);
    for (const auto& [widget, role, name] :
         {std::tuple<QWidget*, QAccessible::Role, QString>{&chip, QAccessible::RadioButton, u"Demain"_s},
          {&time, QAccessible::SpinBox, u"Heure"_s},
          {&ring, QAccessible::ProgressBar, u"2 faites · 3 en retard"_s},
          {&badge, QAccessible::Grouping, u"7 à faire, taches.md"_s},
          {&row, QAccessible::Grouping, u"Tester"_s},
          {&list, QAccessible::List, u"Sections"_s}}) {
        EXPECT_EQ(reader(*widget).text(QAccessible::Name), name);
        EXPECT_EQ(reader(*widget).role(), role) << name.toStdString();
    }
    const auto* value = reader(ring).valueInterface();
    ASSERT_TRUE(value);
    EXPECT_EQ(value->currentValue().toInt(), 2);
    EXPECT_EQ(value->maximumValue().toInt(), 6);
}

TEST(Accessibility, NamesEveryDayOfThePopup) {
    DatePopup popup({2026, 11, 26}, {2026, 11, 24});
    auto& day = *popup.findChild<QWidget*>(u"2026-12-01"_s);
    EXPECT_EQ(reader(day).text(QAccessible::Name), u"mardi 1 décembre 2026"_s);
    for (auto* child : popup.findChildren<QAbstractButton*>())
        EXPECT_FALSE(reader(*child).text(QAccessible::Name).isEmpty() || child->objectName().isEmpty());
}
