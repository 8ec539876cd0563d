#include "DravelKit/DravelUI/Theme.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QStyle>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using namespace dravel;
using Theme::RGB;
using Theme::Tone;

namespace {

std::string name(RGB colour) { return colour.color().name().toUpper().toStdString(); }

double luminance(RGB colour) {
    const auto channel = [&](int shift) {
        const double value = ((colour.hex >> shift) & 0xFF) / 255.0;
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(16) + 0.7152 * channel(8) + 0.0722 * channel(0);
}

// As in WCAG 2.
double contrast(RGB a, RGB b) {
    const auto [low, high] = std::minmax({luminance(a), luminance(b)});
    return (high + 0.05) / (low + 0.05);
}

}

TEST(Theme, KeepsTextReadable) {
    const auto check = [](std::initializer_list<Tone> inks, std::initializer_list<Tone> grounds, double least) {
        for (const auto appearance : {Appearance::light, Appearance::dark})
            for (const Tone& ink : inks)
                for (const Tone& ground : grounds)
                    EXPECT_GE(contrast(ink.in(appearance), ground.in(appearance)), least)
                        << name(ink.in(appearance)) << " on " << name(ground.in(appearance));
    };
    check({Theme::text, Theme::textSecondary, Theme::textTertiary, Theme::accent, Theme::successText,
           Theme::warningText, Theme::dangerText},
          {Theme::background, Theme::surface, Theme::tile, Theme::rowHover}, 4.5);
    check({Theme::text, Theme::textSecondary, Theme::accentOnSoft},
          {Theme::accentSoft, Theme::softHover, Theme::accentSoftPressed}, 4.5);
    check({Theme::text}, {Theme::neutralHover, Theme::neutralPressed}, 4.5);
    check({Theme::successText}, {Theme::successSoft}, 4.5);
    check({Theme::warningText}, {Theme::warningSoft}, 4.5);
    check({Theme::dangerText}, {Theme::dangerSoft}, 4.5);
    check({Theme::onAccent}, {Theme::accent, Theme::accentHover, Theme::accentPressed}, 4.5);
    check({Theme::outline}, {Theme::surface}, 3);             // of fields, and of buttons on dark cards
    check({Theme::accent}, {Theme::surface, Theme::tile}, 3); // the ring of the chosen chip
    check({Theme::textTertiary}, {Theme::background}, 3);     // the scroll bar's thumb
    check({Theme::textTertiary}, {Theme::rowHover}, 3);       // the outline of a hovered row
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
