#include "DravelKit/DravelUI/Theme.h"
#include "tests/support/Contrast.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QStyle>

using namespace Qt::StringLiterals;
using namespace dravel;
using Theme::RGB;
using Theme::Tone;

namespace {

std::string name(RGB colour) { return colour.color().name().toUpper().toStdString(); }

}

// What a pointer or a key brings about, and what is no text; MainWindow's tests read every text that is drawn.
TEST(Theme, KeepsControlsReadable) {
    const auto check = [](std::initializer_list<Tone> inks, std::initializer_list<Tone> grounds, double least) {
        for (const auto appearance : {Appearance::light, Appearance::dark})
            for (const Tone& ink : inks)
                for (const Tone& ground : grounds)
                    EXPECT_GE(tacla::testing::contrast(ink.in(appearance).hex, ground.in(appearance).hex), least)
                        << name(ink.in(appearance)) << " on " << name(ground.in(appearance));
    };
    check({Theme::text, Theme::textSecondary, Theme::textTertiary, Theme::accent, Theme::dangerText},
          {Theme::tile, Theme::rowHover}, 4.5);
    check({Theme::accentOnSoft}, {Theme::softHover, Theme::accentSoftPressed}, 4.5);
    check({Theme::text}, {Theme::neutralHover, Theme::neutralPressed}, 4.5);
    check({Theme::successText}, {Theme::successSoft, Theme::surface, Theme::background}, 4.5);
    check({Theme::onAccent}, {Theme::accentHover, Theme::accentPressed}, 4.5);
    check({Theme::outline}, {Theme::surface}, 3);             // of fields, and of buttons on dark cards
    check({Theme::accent}, {Theme::surface, Theme::tile}, 3); // the ring of the chosen chip
    check({Theme::textTertiary}, {Theme::background}, 3);     // the scroll bar's thumb
    check({Theme::white}, {Theme::danger}, 3);
}

TEST(Look, ComesBackWhenTheDesktopSetsAStyleOfItsOwn) {
    for (int again = 0; again < 2; ++again) {
        QApplication::setStyle(u"Windows"_s);
        QCoreApplication::processEvents();
        EXPECT_EQ(QApplication::style()->pixelMetric(QStyle::PM_MenuBarItemSpacing), 2);
        EXPECT_EQ(QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent), 14);
    }
}
