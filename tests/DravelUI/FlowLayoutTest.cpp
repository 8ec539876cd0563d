#include "DravelKit/DravelUI/FlowLayout.h"

#include <gtest/gtest.h>

#include <QWidget>

#include <map>
#include <sstream>

using namespace dravel;

namespace {

// Items named by a letter, with their widths; all 28 high.
struct Flow {
    QWidget box;
    FlowLayout* layout = new FlowLayout(12, 8, &box);
    std::map<char, QWidget*> items;

    explicit Flow(std::initializer_list<std::pair<char, int>> widths) {
        for (const auto& [letter, width] : widths) {
            items[letter] = new QWidget;
            items[letter]->setFixedSize(width, 28);
            layout->addWidget(items[letter]);
        }
    }

    // "a@0 b@62 | c@0": the left edges line by line, then the height.
    std::string at(int width) {
        box.resize(width, layout->heightForWidth(width));
        layout->setGeometry(box.rect());
        std::ostringstream text;
        int line = 0;
        for (const auto& [letter, item] : items) {
            if (item->isHidden()) continue;
            if (item->y() / 36 != line) text << "| ";
            line = item->y() / 36;
            text << letter << "@" << item->x() << " ";
        }
        text << "high " << box.height();
        return text.str();
    }
};

}

TEST(FlowLayout, WrapsWhatDoesNotFitAndLeavesNoRoomForAHiddenItem) {
    Flow flow({{'a', 50}, {'b', 50}, {'c', 50}});
    EXPECT_EQ(flow.at(174), "a@0 b@62 c@124 high 28");
    EXPECT_EQ(flow.at(173), "a@0 b@62 | c@0 high 64");
    flow.items['b']->setMinimumWidth(0);
    EXPECT_EQ(flow.at(40), "a@0 | b@0 | c@0 high 100"); // an item that is wider than the line
    flow.items['b']->hide();
    EXPECT_EQ(flow.at(120), "a@0 c@62 high 28");
}

TEST(FlowLayout, KeepsItsOwnGapsAndATrailingItemAtTheRight) {
    Flow flow({{'a', 50}, {'b', 50}, {'z', 40}});
    flow.layout->setGapBefore(flow.items['b'], 8);
    flow.layout->setTrailing(flow.items['z']);
    EXPECT_EQ(flow.at(300), "a@0 b@58 z@260 high 28");
    EXPECT_EQ(flow.at(150), "a@0 b@58 | z@110 high 64");
    EXPECT_EQ(flow.layout->sizeHint(), QSize(160, 28));
}
