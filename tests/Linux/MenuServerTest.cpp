#include "Tacla/Linux/MenuServer.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

using namespace tacla;
using namespace Qt::StringLiterals;

TEST(MenuServer, AnswersHostsOfEveryHabit) {
    int count = 1;
    char name[] = "test", *arguments[] = {name, nullptr};
    const QCoreApplication application(count, arguments);
    Menu menu(2);
    menu[0].label = "Pain";
    menu[0].command.kind = MenuCommand::Kind::toggle;
    menu[0].command.task.emplace().key = "pain";
    menu[1].kind = MenuEntry::Kind::submenu;
    menu[1].label = "À venir";
    menu[1].children.resize(1);
    menu[1].children[0].label = "Vin";
    menu[1].children[0].command.task.emplace().key = "vin";
    std::string chosen;
    MenuServer server([&] { return menu; });
    const auto listening =
        server.chosen.connect([&](const MenuCommand& command) { chosen += command.task->key + " "; });
    EXPECT_TRUE(server.AboutToShow(0));
    EXPECT_FALSE(server.AboutToShow(1));

    MenuNode layout;
    server.GetLayout(0, 0, {}, layout);
    EXPECT_TRUE(layout.children.isEmpty());
    EXPECT_EQ(server.GetLayout(0, -1, {u"label"_s}, layout), 1U);
    const int bread = layout.children[0].id, wine = layout.children[1].children[0].id;
    EXPECT_EQ(layout.children[1].children[0].properties, (QVariantMap{{u"label"_s, u"Vin"_s}}));
    EXPECT_EQ(server.GetGroupProperties({}, {}).size(), 4);
    EXPECT_EQ(server.GetGroupProperties({wine, 77}, {}).size(), 1);
    EXPECT_EQ(server.GetProperty(bread, u"label"_s).variant(), u"Pain"_s);
    EXPECT_EQ(server.GetProperty(bread, u"icon"_s).variant(), QString());

    menu.pop_back();
    QList<int> unknown;
    EXPECT_EQ(server.AboutToShowGroup({0, wine}, unknown), QList<int>{0});
    EXPECT_EQ(unknown, QList<int>{wine});
    server.GetLayout(0, -1, {}, layout);
    const int now = layout.children[0].id;
    server.Event(now, u"hovered"_s, {}, 0);
    server.Event(wine, u"clicked"_s, {}, 0); // of the layout before
    menu.clear();
    server.refresh();
    EXPECT_EQ(server.EventGroup({{now, u"clicked"_s, {}, 0}, {now, u"hovered"_s, {}, 0}, {bread, u"clicked"_s, {}, 0}}),
              QList<int>{bread});
    EXPECT_EQ(chosen, "") << "the host has its answer first";
    QCoreApplication::processEvents();
    EXPECT_EQ(chosen, "vin pain ");
}
