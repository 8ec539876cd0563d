#include "DravelKit/DravelUI/MenuStyle.h"

#include "DravelKit/DravelUI/Symbols.h"
#include "DravelKit/DravelUI/TextPaint.h"
#include "DravelKit/DravelUI/Theme.h"

#include <QGuiApplication>
#include <QMenu>
#include <QPainter>
#include <QStyleOption>
#include <QWidget>
#include <xcb/xcb.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>

namespace dravel {

namespace menus {
namespace {

constexpr int sidePadding = 10, columnGap = 24, markColumn = 22;
constexpr auto& type = Theme::Typography::body;

// The title without the marks of its mnemonic.
QString plainTitle(const QString& text) {
    QString plain;
    const QString title = text.section(u'\t', 0, 0);
    for (int at = 0; at < title.size(); ++at) {
        if (title[at] == u'&' && ++at == title.size()) break;
        plain += title[at];
    }
    return plain;
}

QString shortcut(const QString& text) { return text.section(u'\t', 1, 1); }

bool isDestructive(const QWidget* widget, const QRect& entry) {
    const auto* menu = qobject_cast<const QMenu*>(widget);
    const QAction* action = menu ? menu->actionAt(entry.center()) : nullptr;
    return action && action->property(destructive).toBool();
}

struct Inks {
    QColor text, fill;
};

Inks inks(const QStyleOptionMenuItem& option, bool danger) {
    const Appearance look = appearanceOf(QGuiApplication::palette());
    const auto colour = [look](const Theme::Tone& tone) { return tone.in(look).color(); };
    if (!option.state.testFlag(QStyle::State_Enabled)) return {colour(Theme::textTertiary), Qt::transparent};
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const QColor plain = colour(danger ? Theme::dangerText : selected ? Theme::accentOnSoft : Theme::text);
    return {plain, selected ? colour(danger ? Theme::dangerSoft : Theme::accentSoft) : Qt::transparent};
}

void paintSeparator(QPainter& painter, const QStyleOptionMenuItem& option) {
    const QRect line(option.rect.left() + sidePadding, option.rect.center().y(), option.rect.width() - 2 * sidePadding,
                     1);
    painter.fillRect(line, Theme::border.in(appearanceOf(QGuiApplication::palette())).color());
}

}

QSize entrySize(const QStyleOptionMenuItem& option) {
    if (option.menuItemType == QStyleOptionMenuItem::Separator) return {2 * sidePadding, 9};
    int width = 2 * sidePadding + textWidth(type, plainTitle(option.text));
    if (option.menuHasCheckableItems) width += markColumn;
    if (option.reservedShortcutWidth > 0) width += columnGap + option.reservedShortcutWidth;
    if (option.menuItemType == QStyleOptionMenuItem::SubMenu) width += columnGap;
    return {width, entryHeight};
}

void paintEntry(QPainter& painter, const QStyleOptionMenuItem& option, const QWidget* menu) {
    if (option.menuItemType == QStyleOptionMenuItem::Separator) return paintSeparator(painter, option);
    const Inks ink = inks(option, isDestructive(menu, option.rect));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink.fill);
    painter.drawRoundedRect(option.rect, Theme::Radius::xs, Theme::Radius::xs);

    QRect inner = option.rect.adjusted(sidePadding, 0, -sidePadding, 0);
    if (option.menuHasCheckableItems) {
        if (option.checked)
            paintSymbol(painter, QRect(inner.left(), inner.top(), 14, inner.height()), Symbol::checkLg, 14, ink.text);
        inner.setLeft(inner.left() + markColumn);
    }
    paintLine(painter, inner, type, ink.text, plainTitle(option.text));
    if (option.menuItemType == QStyleOptionMenuItem::SubMenu)
        paintSymbol(painter, QRect(inner.right() - 11, inner.top(), 12, inner.height()), Symbol::chevronRight, 12,
                    ink.text);
    if (const QString keys = shortcut(option.text); !keys.isEmpty())
        paintLine(painter, inner, type, Theme::textTertiary.in(appearanceOf(QGuiApplication::palette())).color(), keys,
                  Qt::AlignRight);
    painter.restore();
}

void paintBarEntry(QPainter& painter, const QStyleOptionMenuItem& option) {
    const Appearance look = appearanceOf(QGuiApplication::palette());
    const bool open = option.state.testFlag(QStyle::State_Sunken), hot = option.state.testFlag(QStyle::State_Selected);
    painter.save();
    painter.fillRect(option.rect, Theme::surface.in(look).color());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (open || hot) {
        painter.setBrush((open ? Theme::accentSoft : Theme::tile).in(look).color());
        painter.drawRoundedRect(option.rect.adjusted(0, 2, 0, -2), Theme::Radius::xs, Theme::Radius::xs);
    }
    const auto& ink = !option.state.testFlag(QStyle::State_Enabled) ? Theme::textTertiary
                      : open                                        ? Theme::accentOnSoft
                                                                    : Theme::text;
    paintLine(painter, option.rect, type, ink.in(look).color(), plainTitle(option.text), Qt::AlignHCenter);
    painter.restore();
}

}

namespace popups {

namespace {

constexpr int radius = Theme::Radius::sm;

template <class Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

// A compositing manager owns a selection of this name.
bool hasCompositor(xcb_connection_t* connection) {
    const std::string name = "_NET_WM_CM_S0";
    const auto atomCookie = xcb_intern_atom(connection, 1, static_cast<std::uint16_t>(name.size()), name.c_str());
    const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection, atomCookie, nullptr), &std::free);
    if (!atom || atom->atom == XCB_ATOM_NONE) return false;
    const auto ownerCookie = xcb_get_selection_owner(connection, atom->atom);
    const Owned<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(connection, ownerCookie, nullptr),
                                                       &std::free);
    return owner && owner->owner != XCB_WINDOW_NONE;
}

// Only an X server may show windows without blending them.
bool blendsWindows() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return !x11 || !x11->connection() || hasCompositor(x11->connection());
}

}

void prepare(QWidget& window) { window.setAttribute(Qt::WA_TranslucentBackground, blendsWindows()); }

bool isShaped(const QWidget& window) { return !window.testAttribute(Qt::WA_TranslucentBackground); }

QRegion shape(const QRect& rect) {
    QRegion region(rect.adjusted(0, radius, 0, -radius));
    for (int row = 0; row < radius; ++row) {
        const double height = radius - row - 0.5; // of the row above the middle of the corner's circle
        const int inset = static_cast<int>(std::lround(radius - std::sqrt(radius * radius - height * height)));
        const int width = rect.width() - 2 * inset;
        region += QRect(rect.left() + inset, rect.top() + row, width, 1);
        region += QRect(rect.left() + inset, rect.bottom() - row, width, 1);
    }
    return region;
}

void paint(QPainter& painter, const QWidget& window) {
    painter.save();
    // The steps of the shape take the colour of the line.
    if (isShaped(window)) painter.fillRect(window.rect(), Theme::border.on(window));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Theme::border.on(window));
    painter.setBrush(Theme::surface.on(window));
    painter.drawRoundedRect(QRectF(window.rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius - 0.5, radius - 0.5);
    painter.restore();
}

}

}
