#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/Fields.h"
#include "DravelKit/DravelUI/SettingsCard.h"
#include "DravelKit/DravelUI/SidebarList.h"

#include <gtest/gtest.h>

#include <QAccessible>

using namespace dravel;
using namespace Qt::StringLiterals;

static QAccessibleInterface& reader(QWidget& widget) { return *QAccessible::queryAccessibleInterface(&widget); }

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
