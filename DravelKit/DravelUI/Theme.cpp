#include "DravelKit/DravelUI/Theme.h"

#include <QFile>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPalette>
#include <QWidget>

#include <deque>

static void initResources() { Q_INIT_RESOURCE(dravel_ui); }

namespace dravel {

Appearance appearanceOf(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128 ? Appearance::dark : Appearance::light;
}

Appearance appearanceOf(const QWidget& widget) { return appearanceOf(widget.palette()); }

QColor Theme::Tone::on(const QWidget& widget) const { return in(appearanceOf(widget)).color(); }

namespace Theme {
namespace {

using namespace Qt::StringLiterals;

bool load(const QString& name) {
    initResources();
    const QString path = u":/dravel/fonts/%1.ttf"_s.arg(name);
    return QFile::exists(path) && QFontDatabase::addApplicationFont(path) >= 0;
}

bool hasDisplayFont() {
    static const bool loaded = load(u"Comfortaa-Bold"_s);
    return loaded;
}

QFont make(const TextStyle& style) {
    const bool display = style.display && hasDisplayFont();
    QStringList families;
    if (display) families << u"Comfortaa"_s;
    if (hasBrandFont()) families << u"Atkinson Hyperlegible Next"_s;
    // The family behind a name like "Sans Serif": what Qt does not know it skips, and the emoji font has digits, too.
    if (families.empty()) families << QFontInfo(QFontDatabase::systemFont(QFontDatabase::GeneralFont)).family();
    families << u"Noto Color Emoji"_s;

    QFont font;
    font.setFamilies(families);
    font.setPixelSize(style.size);
    font.setWeight(static_cast<QFont::Weight>(style.weight));
    font.setStrikeOut(style.struck);
    if (display) font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

}

bool hasBrandFont() {
    static const bool loaded = [] {
        bool all = true;
        for (const char16_t* cut : {u"Regular", u"Medium", u"SemiBold", u"Bold"})
            all = load(u"AtkinsonHyperlegibleNext-"_s + QString::fromUtf16(cut)) && all;
        return all;
    }();
    return loaded;
}

const QFont& font(const TextStyle& style) {
    struct Made {
        TextStyle style;
        QFont font;
    };
    // Kept for good: fonts outlive the application object, whose caches they refer to.
    static auto& made = *new std::deque<Made>;
    const TextStyle key = style.withLine(0);
    for (const Made& one : made)
        if (one.style == key) return one.font;
    return made.emplace_back(Made{key, make(style)}).font;
}

}

}
