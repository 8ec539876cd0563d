#include "DravelKit/DravelUI/Theme.h"
#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/DravelUI/Symbols.h"
#include "tests/support/Contrast.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QRegion>
#include <QStyle>

using namespace Qt::StringLiterals;
using namespace dravel;
using Theme::Tone;

// What a pointer or a key brings about, and what is no text; MainWindow's tests read every text that is drawn.
TEST(Theme, KeepsControlsReadable) {
    const auto check = [](std::initializer_list<Tone> inks, std::initializer_list<Tone> grounds, double least) {
        for (const auto appearance : {Appearance::light, Appearance::dark})
            for (const Tone& ink : inks)
                for (const Tone& ground : grounds)
                    EXPECT_GE(tacla::testing::contrast(ink.in(appearance).hex, ground.in(appearance).hex), least)
                        << std::hex << ink.in(appearance).hex << " on " << ground.in(appearance).hex;
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

TEST(Rendering, PaintsAListOfAHundredThousandPixels) {
    CardStage stage;
    stage.resize(200, 6'000'000);
    Card card(&stage);
    card.setGeometry(20, 20, 160, 5'900'000);
    stage.setAttribute(Qt::WA_DontShowOnScreen);
    stage.show();
    QImage image(200, 100, QImage::Format_ARGB32_Premultiplied);
    stage.render(&image, {}, QRegion(0, 3'000'000, 200, 100));
    EXPECT_EQ(image.pixelColor(100, 50).name(), u"#ffffff"_s);
    EXPECT_EQ(image.pixelColor(5, 50).name(), u"#f5f5f5"_s);
}

TEST(Symbols, AreTintedAndSharpAtEveryScale) {
    for (int symbol = 0; symbol <= static_cast<int>(Symbol::keyboard); ++symbol)
        for (const qreal ratio : {1.0, 1.25, 2.0}) {
            const QPixmap pixmap = symbolPixmap(static_cast<Symbol>(symbol), 16, QColor(0x52, 0x4F, 0xF1), ratio);
            EXPECT_EQ(pixmap.size(), QSizeF(16, 16) * ratio);
            const QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
            int covered = 0; // of 255 a pixel
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x) {
                    const QColor pixel = image.pixelColor(x, y);
                    covered += pixel.alpha();
                    EXPECT_TRUE(pixel.alpha() <= 250 || pixel.name() == u"#524ff1"_s) << symbol;
                }
            EXPECT_GT(covered, 255 * 6 * ratio * ratio) << "symbol " << symbol << " at " << ratio;
        }
}
