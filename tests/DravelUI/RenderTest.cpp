#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/DravelUI/Fields.h"
#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/DravelUI/MenuStyle.h"
#include "DravelKit/DravelUI/Symbols.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QImage>
#include <QMenu>
#include <QPainter>
#include <QRegion>

#include <algorithm>
#include <functional>
#include <memory>

using namespace dravel;
using namespace Qt::StringLiterals;

namespace {

class Picture {
  public:
    Picture(QWidget& widget, qreal scale) : scale_(scale) {
        widget.ensurePolished();
        image_ = QImage((QSizeF(widget.size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
        image_.setDevicePixelRatio(scale);
        image_.fill(Qt::transparent);
        widget.render(&image_);
    }
    // The colour in the middle of a logical pixel.
    std::string at(int x, int y) const {
        const auto pixel = [this](int logical) { return static_cast<int>((logical + 0.5) * scale_); };
        return image_.pixelColor(pixel(x), pixel(y)).name().toStdString();
    }

  private:
    qreal scale_;
    QImage image_;
};

struct Light {
    ~Light() { setAppearance(Appearance::Light); }
};

}

TEST(Rendering, MarksWhatIsHoveredAndTheDaysOfAMonth) {
    const auto faceOf = [](QWidget& widget) { return Picture(widget, 1).at(6, 14); };
    const auto hovered = [&](QWidget& widget) {
        widget.resize(widget.sizeHint().expandedTo({40, 28}));
        widget.setAttribute(Qt::WA_UnderMouse);
        return faceOf(widget);
    };
    const auto hex = [](const Theme::Tone& tone) { return tone.light.color().name().toStdString(); };
    Button onBackground(Button::Kind::NeutralOnBackground, u"Fermer"_s), prominent(Button::Kind::Prominent, u"Non"_s);
    EXPECT_EQ(hovered(onBackground), hex(Theme::neutralHover));
    EXPECT_EQ(hovered(prominent), hex(Theme::accentHover));
    const DatePopup popup({2026, 11, 26}, {2026, 11, 24});
    for (const auto& [day, face] : {std::pair{u"2026-11-26"_s, Theme::accent},
                                    {u"2026-11-24"_s, Theme::accentSoft},
                                    {u"2026-12-01"_s, Theme::tile}})
        EXPECT_EQ(hovered(*popup.findChild<QWidget*>(day)), hex(face)) << day.toStdString();
}

TEST(Rendering, ThrowsTheShadowOfACardInLightOnly) {
    const Light afterwards;
    CardStage stage;
    stage.resize(200, 200);
    Card card(&stage);
    card.setGeometry(20, 20, 160, 100);
    const auto below = [&] {
        stage.setAttribute(Qt::WA_DontShowOnScreen);
        stage.show();
        return Picture(stage, 2).at(100, 121);
    };
    EXPECT_LT(below(), "#f5f5f5");
    EXPECT_EQ(Picture(stage, 2).at(100, 130), "#f5f5f5");
    EXPECT_EQ(Picture(stage, 2).at(100, 20), "#ffffff");
    setAppearance(Appearance::Dark); // nothing is made anew
    QCoreApplication::processEvents();
    EXPECT_EQ(below(), "#131927");
    EXPECT_EQ(Picture(stage, 2).at(100, 20), "#2c3346");
    EXPECT_EQ(Picture(stage, 2).at(100, 60), "#1e2436");
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

TEST(Rendering, DrawsMenusInTheLookOfTheKit) {
    QMenu menu;
    menu.addAction(u"Modifier"_s);
    menu.addSeparator();
    auto* remove = menu.addAction(u"Supprimer"_s);
    markDestructive(*remove);
    menu.ensurePolished();
    EXPECT_EQ(menu.sizeHint().height(), 5 + 28 + 9 + 28 + 5);
    menu.resize(menu.sizeHint());
    menu.setActiveAction(remove);
    const Picture picture(menu, 1);
    EXPECT_EQ(picture.at(40, 0), "#d4d7dd");
    EXPECT_EQ(picture.at(8, 8), "#ffffff");
    EXPECT_EQ(picture.at(40, 5 + 28 + 4), "#d4d7dd");
    EXPECT_EQ(picture.at(8, 5 + 28 + 9 + 14), "#fde9e8");

    QMenu rich;
    auto* entry = rich.addAction(u"Lu && &vu"_s);
    const auto widthWith = [&](const std::function<void()>& change) {
        const int before = rich.sizeHint().width();
        change();
        return rich.sizeHint().width() - before;
    };
    EXPECT_EQ(widthWith([&] { entry->setCheckable(true); }), 22);
    EXPECT_GT(widthWith([&] { entry->setShortcut(Qt::CTRL | Qt::Key_L); }), 24);
    const QImage unchecked = rich.grab().toImage();
    entry->setChecked(true);
    EXPECT_NE(rich.grab().toImage(), unchecked);
    const QImage enabled = rich.grab().toImage();
    entry->setEnabled(false);
    EXPECT_NE(rich.grab().toImage(), enabled);
}

TEST(Rendering, ShapesAPopupLikeItsRoundedFace) {
    QImage face(60, 50, QImage::Format_ARGB32_Premultiplied);
    face.fill(Qt::transparent);
    QPainter painter(&face);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(face.rect(), 8, 8);
    const QRegion shape = popups::shape(face.rect());
    for (int y = 0; y < face.height(); ++y)
        for (int x = 0; x < face.width(); ++x) {
            const int alpha = face.pixelColor(x, y).alpha();
            if (alpha > 150 || alpha < 100) {
                EXPECT_EQ(shape.contains(QPoint(x, y)), alpha > 150) << x << ", " << y;
            }
        }
}

TEST(Symbols, AreTintedAndSharpAtEveryScale) {
    for (int symbol = 0; symbol <= static_cast<int>(Symbol::HandThumbsUpFill); ++symbol)
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
