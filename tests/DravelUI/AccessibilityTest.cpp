#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/DravelUI/Fields.h"
#include "DravelKit/DravelUI/SettingsCard.h"
#include "DravelKit/DravelUI/SidebarList.h"
#include "DravelKit/DravelUI/TextField.h"
#include "DravelKit/DravelUI/TextLabel.h"

#include <gtest/gtest.h>

#include <QAccessible>

#include <memory>

using namespace dravel;
using namespace Qt::StringLiterals;

namespace {

QAccessibleInterface& reader(QWidget& widget) { return *QAccessible::queryAccessibleInterface(&widget); }

}

TEST(Accessibility, GivesEveryControlItsRoleAndName) {
    struct Row {
        std::unique_ptr<QWidget> widget;
        QAccessible::Role role;
        QString name;
    };
    const auto ring = [] {
        auto made = std::make_unique<ProgressRing>();
        made->setProgress(2, 6, u"2 faites · 3 en retard"_s);
        return made;
    };
    const auto badge = [] {
        auto made = std::make_unique<SidebarBadge>();
        made->setContent({Symbol::checkLg, u"7 à faire"_s, u"taches.md"_s});
        return made;
    };
    std::array<Row, 13> rows{{
        {std::make_unique<Button>(Button::Kind::soft, u"Autoriser…"_s), QAccessible::Button, u"Autoriser…"_s},
        {std::make_unique<IconButton>(Symbol::threeDots, u"Modifier, reporter ou supprimer"_s), QAccessible::Button,
         u"Modifier, reporter ou supprimer"_s},
        {std::make_unique<Chip>(u"Demain"_s), QAccessible::RadioButton, u"Demain"_s},
        {std::make_unique<Switch>(u"Heure"_s), QAccessible::CheckBox, u"Heure"_s},
        {std::make_unique<TextField>(TextField::Kind::boxed, u"Titre"_s), QAccessible::EditableText, u"Titre"_s},
        {std::make_unique<DateField>(u"Jour"_s), QAccessible::SpinBox, u"Jour"_s},
        {std::make_unique<TimeField>(u"Heure"_s), QAccessible::SpinBox, u"Heure"_s},
        {std::make_unique<TextLabel>(Theme::Typography::body, Theme::text, u"<b>R&D</b>"_s), QAccessible::StaticText,
         u"<b>R&D</b>"_s},
        {ring(), QAccessible::ProgressBar, u"2 faites · 3 en retard"_s},
        {badge(), QAccessible::Grouping, u"7 à faire, taches.md"_s},
        {std::make_unique<SettingRow>(Symbol::bell, u"Tester"_s), QAccessible::Grouping, u"Tester"_s},
        {std::make_unique<DravelPage>(u"Faites"_s, u""_s), QAccessible::Pane, u"Faites"_s},
        {std::make_unique<SidebarList>(u"Sections"_s), QAccessible::List, u"Sections"_s},
    }};
    for (const Row& row : rows) {
        EXPECT_EQ(reader(*row.widget).text(QAccessible::Name), row.name);
        EXPECT_EQ(reader(*row.widget).role(), row.role) << row.name.toStdString();
    }
    const auto* value = reader(*rows[8].widget).valueInterface(); // of the ring
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
