#include "DravelKit/DravelUI/Theme.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFontInfo>
#include <QStyle>

#include <algorithm>
#include <cmath>

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

TEST(Theme, MixesEachChannelAloneAndRoundsHalvesUp) {
    EXPECT_EQ(name(RGB{0x000000}.mixed(RGB{0xFFFFFF}, 0.5)), "#808080");
    EXPECT_EQ(name(RGB{0xFFFFFF}.mixed(RGB{0x000000}, 0.5)), "#808080");
    EXPECT_EQ(name(RGB{0x0000FF}.mixed(RGB{0xFF0000}, 1)), "#FF0000");
    EXPECT_EQ(name(RGB{0x102030}.mixed(RGB{0x203040}, 0.25)), "#142434");
    for (const double t : {-2.0, 0.0, 0.3, 1.0, 7.0}) EXPECT_EQ(RGB{0x524FF1}.mixed(RGB{0x524FF1}, t), RGB{0x524FF1});
}

TEST(Theme, KeepsTextReadable) {
    const auto check = [](std::initializer_list<Tone> inks, std::initializer_list<Tone> grounds, double least) {
        for (const auto appearance : {Appearance::Light, Appearance::Dark})
            for (const Tone& ink : inks)
                for (const Tone& ground : grounds)
                    EXPECT_GE(contrast(ink.in(appearance), ground.in(appearance)), least)
                        << name(ink.in(appearance)) << " on " << name(ground.in(appearance));
    };
    check({Theme::text, Theme::textSecondary, Theme::textTertiary, Theme::accent, Theme::successText,
           Theme::warningText, Theme::dangerText},
          {Theme::background, Theme::surface, Theme::tile}, 4.5);
    check({Theme::text, Theme::textSecondary, Theme::accentOnSoft}, {Theme::accentSoft, Theme::accentSoftPressed}, 4.5);
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
        QApplication::setStyle(QStringLiteral("Windows"));
        QCoreApplication::processEvents();
        EXPECT_EQ(QApplication::style()->pixelMetric(QStyle::PM_MenuBarItemSpacing), 2);
        EXPECT_EQ(QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent), 14);
    }
}

TEST(Typography, HasItsSizesWithOrWithoutTheBrandFonts) {
    using namespace Theme::Typography;
    for (const auto& style : {pageTitle, Theme::Typography::stat, cardTitle, subtitle, body, bodyMedium, callout,
                              caption, captionStrong, footnote}) {
        const QFont& font = Theme::font(style);
        EXPECT_EQ(QFontInfo(font).pixelSize(), style.size);
        EXPECT_EQ(font.weight(), style.weight);
        EXPECT_NE(QFontInfo(font).family(), QStringLiteral("Noto Color Emoji")); // which has digits, too
        EXPECT_EQ(font.families().constLast(), QStringLiteral("Noto Color Emoji"));
        if (Theme::hasBrandFont() && !style.display) {
            EXPECT_EQ(QFontInfo(font).family(), QStringLiteral("Atkinson Hyperlegible Next"));
        }
    }
    EXPECT_EQ(&Theme::font(bodyMedium), &Theme::font(taskTitle)); // another line box, the same type
    EXPECT_TRUE(Theme::font(taskTitle.struckOut()).strikeOut());
}
