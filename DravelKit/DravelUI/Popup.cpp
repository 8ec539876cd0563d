#include "DravelKit/DravelUI/Popup.h"

#include "DravelKit/DravelUI/Theme.h"

#include <QGuiApplication>
#include <QPainter>
#include <QWidget>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>

#include <xcb/xcb.h>

namespace dravel::popups {
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
