#include "DravelKit/DravelUI/Look.h"

#include "DravelKit/DravelUI/KitAccessible.h"
#include "DravelKit/DravelUI/KitStyle.h"
#include "DravelKit/DravelUI/Typography.h"

#include <QAccessible>
#include <QApplication>
#include <QLibraryInfo>
#include <QToolTip>
#include <QTranslator>

namespace dravel {

QPalette themePalette(Appearance appearance) {
    using enum QPalette::ColorRole;
    QPalette palette;
    const auto set = [&](std::initializer_list<QPalette::ColorRole> roles, const Theme::Tone& tone) {
        for (const auto role : roles) palette.setColor(role, tone.in(appearance).color());
    };
    set({Window}, Theme::background);
    set({Base, Light, ToolTipBase}, Theme::surface);
    set({AlternateBase}, Theme::rowHover);
    set({Button, Midlight}, Theme::tile);
    set({Mid, Dark}, Theme::border);
    set({Shadow, Text, WindowText, ButtonText, BrightText, ToolTipText}, Theme::text);
    set({PlaceholderText}, Theme::textTertiary);
    set({Highlight}, Theme::accentSoft);
    set({HighlightedText}, Theme::accentOnSoft);
    set({Link, LinkVisited}, Theme::accent);
    const auto faded = Theme::text.mixed(Theme::surface, .6).in(appearance).color(); // 40 % opacity, on cards
    for (const auto role : {Text, WindowText, ButtonText}) palette.setColor(QPalette::Disabled, role, faded);
    return palette;
}

void installLook(QApplication& application, Appearance appearance) {
    QAccessible::installFactory(kitAccessible);
    application.setStyle(new KitStyle);
    QApplication::setFont(Theme::font(Theme::Typography::body));
    setAppearance(appearance);
}

void translateQt(QApplication& application) {
    auto* french = new QTranslator(&application);
    if (french->load(QStringLiteral("qtbase_fr"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(french);
}

void setAppearance(Appearance appearance) {
    const QPalette palette = themePalette(appearance);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

bool animates(const QWidget& widget) {
    return widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) > 0;
}

}
