#include "tests/support/Contrast.h"
#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/DravelUI/TextField.h"
#include "tests/MainWindow/TestWindow.h"

#include <QApplication>
#include <QMap>
#include <QMenu>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>
#include <QTest>

#include <gtest/gtest.h>

namespace tacla {
namespace {

using namespace Qt::StringLiterals;
using testing::TestWindow;

// Paints like any other, and writes down each text with its colour and the colour that it finds below it.
class TextEngine final : public QPaintEngine {
  public:
    struct Drawn {
        QRgb ink, ground;
        bool large; // 24 px, or 19 px bold
        auto operator<=>(const Drawn&) const = default;
    };

    explicit TextEngine(QImage& canvas) : QPaintEngine(AllFeatures), canvas_(canvas) {}

    bool begin(QPaintDevice*) override { return painter_.begin(&canvas_); }
    bool end() override { return painter_.end(); }
    Type type() const override { return User; }

    void updateState(const QPaintEngineState& now) override {
        painter_.setTransform(now.transform());
        painter_.setPen(now.pen());
        painter_.setBrush(now.brush());
        painter_.setOpacity(now.opacity());
        painter_.setRenderHints(now.renderHints());
        if (now.state() & DirtyClipRegion) painter_.setClipRegion(now.clipRegion(), now.clipOperation());
        if (now.state() & DirtyClipPath) painter_.setClipPath(now.clipPath(), now.clipOperation());
        if (now.state() & DirtyClipEnabled) painter_.setClipping(now.isClipEnabled());
    }
    void drawPath(const QPainterPath& path) override { painter_.drawPath(path); }
    void drawPolygon(const QPointF* points, int count, PolygonDrawMode mode) override {
        mode == PolylineMode ? painter_.drawPolyline(points, count) : painter_.drawPolygon(points, count);
    }
    void drawPixmap(const QRectF& at, const QPixmap& pixmap, const QRectF& part) override {
        painter_.drawPixmap(at, pixmap, part);
    }
    void drawTextItem(const QPointF& at, const QTextItem& item) override {
        const QFont font = item.font();
        const QRectF box(at.x(), at.y() - item.ascent(), item.width(), item.ascent() + item.descent());
        const auto ground = commonest(painter_.transform().mapRect(box).toAlignedRect());
        const bool large = font.pixelSize() >= 24 || (font.pixelSize() >= 19 && font.weight() >= QFont::Bold);
        const auto text = item.text();
        if (ground && std::any_of(text.begin(), text.end(), [](QChar c) { return c.isLetterOrNumber(); }))
            drawn.insert(Drawn{painter_.pen().color().rgb(), *ground, large}, text);
        painter_.setFont(font);
        painter_.drawText(at, text);
    }

    QMap<Drawn, QString> drawn; // with one of its texts

  private:
    std::optional<QRgb> commonest(const QRect& box) const {
        QMap<QRgb, int> counts;
        const QRect seen = box & canvas_.rect();
        for (int y = seen.top(); y <= seen.bottom(); ++y)
            for (int x = seen.left(); x <= seen.right(); ++x) ++counts[canvas_.pixel(x, y)];
        const auto most = std::max_element(counts.begin(), counts.end());
        return most == counts.end() ? std::nullopt : std::optional(most.key());
    }

    QImage& canvas_;
    QPainter painter_;
};

class TextDevice final : public QPaintDevice {
  public:
    explicit TextDevice(QWidget& widget) : canvas_(widget.size(), QImage::Format_RGB32), engine(canvas_) {
        widget.render(this);
    }
    QPaintEngine* paintEngine() const override { return &engine; }
    int metric(PaintDeviceMetric metric) const override {
        switch (metric) {
        case PdmWidth: return canvas_.width();
        case PdmHeight: return canvas_.height();
        case PdmDevicePixelRatio: return 1;
        case PdmDevicePixelRatioScaled: return static_cast<int>(devicePixelRatioFScale());
        default: return 96;
        }
    }

  private:
    QImage canvas_;

  public:
    mutable TextEngine engine;
};

void expectReadable(QWidget& widget, const char* what) {
    const TextDevice device(widget);
    EXPECT_FALSE(device.engine.drawn.isEmpty()) << what;
    for (const auto& [drawn, text] : device.engine.drawn.asKeyValueRange()) {
        const auto ratio = testing::contrast(drawn.ink & 0xFFFFFF, drawn.ground & 0xFFFFFF);
        EXPECT_GE(ratio, drawn.large ? 3 : 4.5) << what << ": " << text.toStdString();
    }
}

TEST(Contrast, IsEnoughForEveryTextThatIsDrawn) {
    for (const auto appearance : {dravel::Appearance::light, dravel::Appearance::dark}) {
        dravel::setAppearance(appearance);
        TestWindow window("- [ ] ❗ Loyer · 2026-11-20 14:00 · due 2026-11-12\n- [ ] Pain · 2026-11-24\n- [ ] ❗ Vin\n"
                          "- [ ] Devis · 2026-11-25 14:30\n- [x] Bail · 2026-11-24\n- [x] Thé · 2026-11-23\n");
        window.view->resize(980, 2400); // the settings as a whole
        for (const auto section :
             {Section::today, Section::late, Section::upcoming, Section::done, Section::settings}) {
            window.page(section);
            expectReadable(*window.view, "page");
        }
        window.page(Section::today);
        auto& title = window.control<dravel::TextField>("add.title");
        title.setFocus();
        QTest::keyClicks(&title, u"Appeler Paul demain 14:30 prioritaire"_s);
        title.selectAll();
        window.settle();
        expectReadable(*window.view, "offer");
        window.press(Qt::Key_Tab);
        window.press(Qt::Key_Return);
        window.settle();
        expectReadable(*window.view, "toast");
        window.focus("Pain");
        window.press(Qt::Key_F2);
        window.settle();
        expectReadable(*window.view, "editor");
        window.press(Qt::Key_Escape);
        window.focus("Pain");
        window.press(Qt::Key_Menu);
        window.settle();
        expectReadable(window.control<QMenu>("actions"), "menu");
        window.control<QMenu>("actions").close();
        window.settle();
        window.press(Qt::Key_F, Qt::ControlModifier);
        QTest::keyClicks(&window.control<dravel::TextField>("find.words"), u"e"_s);
        window.settle();
        expectReadable(*window.view, "found");
        TestWindow welcome("", "2026-11-24 10:40", true);
        expectReadable(*welcome.view, "welcome");
    }
    dravel::setAppearance(dravel::Appearance::light);
}

}
}
