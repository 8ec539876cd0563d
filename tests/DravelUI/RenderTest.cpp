#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/DravelUI/Symbols.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QRegion>

using namespace dravel;
using namespace Qt::StringLiterals;

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
                    if (pixel.alpha() > 250) {
                        EXPECT_EQ(pixel.name(), u"#524ff1"_s);
                    }
                }
            EXPECT_GT(covered, 255 * 6 * ratio * ratio) << "symbol " << symbol << " at " << ratio;
        }
}
