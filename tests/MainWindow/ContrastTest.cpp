#include "tests/support/Contrast.h"
#include "DravelKit/DravelUI/Look.h"
#include "tests/MainWindow/TestWindow.h"

#include <QMap>
#include <QPaintEngine>
#include <QPainter>

namespace tacla::testing {

// Paints nothing, and writes down each text with its colour and the colour that most of its place has in the picture.
class TextEngine final : public QPaintEngine {
  public:
    struct Drawn {
        QRgb ink, ground;
        bool large; // 24 px, or 19 px bold
        auto operator<=>(const Drawn&) const = default;
    };

    explicit TextEngine(const QImage& picture) : QPaintEngine(AllFeatures), picture_(picture) {}

    bool begin(QPaintDevice*) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }
    void updateState(const QPaintEngineState&) override {}
    void drawPath(const QPainterPath&) override {}
    void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}
    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
    void drawTextItem(const QPointF& at, const QTextItem& item) override {
        const QFont font = item.font();
        const QRectF box(at.x(), at.y() - item.ascent(), item.width(), item.ascent() + item.descent());
        const auto ground = commonest(painter()->deviceTransform().mapRect(box).toAlignedRect());
        const bool large = font.pixelSize() >= 24 || (font.pixelSize() >= 19 && font.weight() >= QFont::Bold);
        const auto text = item.text();
        if (ground && std::any_of(text.begin(), text.end(), [](QChar c) { return c.isLetterOrNumber(); }))
            drawn.insert(Drawn{painter()->pen().color().rgb(), *ground, large}, text);
    }

    QMap<Drawn, QString> drawn; // with one of its texts

  private:
    std::optional<QRgb> commonest(const QRect& box) const {
        QMap<QRgb, int> counts;
        const QRect seen = box & picture_.rect();
        for (int y = seen.top(); y <= seen.bottom(); ++y)
            for (int x = seen.left(); x <= seen.right(); ++x) ++counts[picture_.pixel(x, y)];
        const auto most = std::max_element(counts.begin(), counts.end());
        return most == counts.end() ? std::nullopt : std::optional(most.key());
    }

    const QImage& picture_;
};

struct TextDevice final : QImage {
    using QImage::QImage;
    QPaintEngine* paintEngine() const override { return engine; }
    TextEngine* engine = nullptr;
};

static void expectReadable(QWidget& widget, const char* what) {
    QImage picture(widget.size(), QImage::Format_RGB32);
    widget.render(&picture);
    TextEngine texts(picture);
    TextDevice device(widget.size(), QImage::Format_RGB32);
    device.engine = &texts;
    widget.render(&device);
    EXPECT_FALSE(texts.drawn.isEmpty()) << what;
    for (const auto& [drawn, text] : texts.drawn.asKeyValueRange()) {
        const auto ratio = contrast(drawn.ink & 0xFFFFFF, drawn.ground & 0xFFFFFF);
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
             {Section::late, Section::upcoming, Section::done, Section::settings, Section::today}) {
            window.page(section);
            expectReadable(*window.view, "page");
        }
        window.field("add.title").setFocus();
        window.type(u"Appeler Paul demain 14:30 prioritaire"_s);
        window.field("add.title").selectAll();
        expectReadable(*window.view, "offer");
        for (const auto key : {Qt::Key_Tab, Qt::Key_Return}) window.press(key);
        expectReadable(*window.view, "toast");
        window.focus("Pain");
        window.press(Qt::Key_F2);
        expectReadable(*window.view, "editor");
        for (const auto key : {Qt::Key_Escape, Qt::Key_Menu}) window.press(key);
        expectReadable(window.control<QMenu>("actions"), "menu");
        window.control<QMenu>("actions").close();
        window.press(Qt::Key_F, Qt::ControlModifier);
        window.type(u"e"_s);
        expectReadable(*window.view, "found");
        TestWindow welcome("", "2026-11-24 10:40", true);
        expectReadable(*welcome.view, "welcome");
    }
    dravel::setAppearance(dravel::Appearance::light);
}

}
