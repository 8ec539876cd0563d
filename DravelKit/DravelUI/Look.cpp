#include "DravelKit/DravelUI/Look.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/DravelUI/DravelShell.h"
#include "DravelKit/DravelUI/Fields.h"
#include "DravelKit/DravelUI/MenuStyle.h"
#include "DravelKit/DravelUI/SettingsCard.h"
#include "DravelKit/DravelUI/SidebarList.h"
#include "DravelKit/DravelUI/TextField.h"
#include "DravelKit/DravelUI/TextPaint.h"

#include <QAbstractSpinBox>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QLibraryInfo>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QProxyStyle>
#include <QStyleOption>
#include <QToolTip>
#include <QTranslator>

#include <algorithm>

namespace dravel {

using namespace Qt::StringLiterals;
namespace {

constexpr auto still = "dravel.still"; // of the application: nothing moves by itself

constexpr int scrollExtent = 14, thumbWidth = 6, thumbInset = 4, shortestThumb = 32;

// A field of the kit: no frame, no arrows, a symbol at the left.
bool isKitField(const QWidget* widget) {
    const auto* box = qobject_cast<const QAbstractSpinBox*>(widget);
    return box && !box->hasFrame() && box->buttonSymbols() == QAbstractSpinBox::NoButtons;
}

void paintLineEdit(QPainter& painter, const QStyleOption& option) {
    const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(&option);
    if (!frame || frame->lineWidth == 0) return;
    const Appearance look = appearanceOf(option.palette);
    const bool focused = option.state.testFlag(QStyle::State_HasFocus);
    const qreal pen = focused ? 2 : 1;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen((focused ? Theme::accent : Theme::outline).in(look).color(), pen));
    painter.setBrush(Theme::surface.in(look).color());
    painter.drawRoundedRect(QRectF(option.rect).adjusted(pen / 2, pen / 2, -pen / 2, -pen / 2),
                            Theme::Radius::sm - pen / 2, Theme::Radius::sm - pen / 2);
    painter.restore();
}

QRect scrollThumb(const QStyleOptionSlider& option) {
    const bool upright = option.orientation == Qt::Vertical;
    const int length = (upright ? option.rect.height() : option.rect.width()) - 2 * thumbInset;
    const int range = option.maximum - option.minimum;
    const auto exact = static_cast<std::int64_t>(length) * option.pageStep / std::max(range + option.pageStep, 1);
    const int thumb = std::clamp(static_cast<int>(exact), std::min(shortestThumb, length), std::max(length, 0));
    const int start =
        thumbInset + QStyle::sliderPositionFromValue(option.minimum, option.maximum, option.sliderPosition,
                                                     length - thumb, option.upsideDown);
    return upright ? QRect(0, start, option.rect.width(), thumb) : QRect(start, 0, thumb, option.rect.height());
}

QRect scrollPart(const QStyleOptionSlider& option, QStyle::SubControl part) {
    const QRect thumb = scrollThumb(option), whole(QPoint(), option.rect.size());
    const bool upright = option.orientation == Qt::Vertical;
    switch (part) {
    case QStyle::SC_ScrollBarSlider: return thumb;
    case QStyle::SC_ScrollBarGroove:
        return upright ? whole.adjusted(0, thumbInset, 0, -thumbInset) : whole.adjusted(thumbInset, 0, -thumbInset, 0);
    case QStyle::SC_ScrollBarSubPage:
        return upright ? QRect(0, 0, whole.width(), thumb.top()) : QRect(0, 0, thumb.left(), whole.height());
    case QStyle::SC_ScrollBarAddPage:
        return upright ? whole.adjusted(0, thumb.bottom() + 1, 0, 0) : whole.adjusted(thumb.right() + 1, 0, 0, 0);
    default: return {};
    }
}

void paintScrollBar(QPainter& painter, const QStyleOptionSlider& option) {
    painter.fillRect(option.rect, option.palette.window());
    if (option.maximum <= option.minimum) return;
    const bool active = option.activeSubControls.testFlag(QStyle::SC_ScrollBarSlider);
    QRectF thumb = scrollThumb(option).translated(option.rect.topLeft());
    if (option.orientation == Qt::Vertical)
        thumb = {thumb.right() - thumbInset - thumbWidth, thumb.top(), thumbWidth, thumb.height()};
    else
        thumb = {thumb.left(), thumb.bottom() - thumbInset - thumbWidth, thumb.width(), thumbWidth};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush((active ? Theme::textSecondary : Theme::textTertiary).in(appearanceOf(option.palette)).color());
    painter.drawRoundedRect(thumb, thumbWidth / 2.0, thumbWidth / 2.0);
}

// The style of every widget that Qt draws itself: line edits, scroll bars and menus in the look of the kit, the rest as
// Fusion in the kit's palette.
class KitStyle final : public QProxyStyle {
  public:
    KitStyle();

    using QProxyStyle::polish;
    void polish(QWidget*) override;
    int pixelMetric(PixelMetric, const QStyleOption*, const QWidget*) const override;
    int styleHint(StyleHint, const QStyleOption*, const QWidget*, QStyleHintReturn*) const override;
    QSize sizeFromContents(ContentsType, const QStyleOption*, const QSize&, const QWidget*) const override;
    QRect subControlRect(ComplexControl, const QStyleOptionComplex*, SubControl, const QWidget*) const override;
    void drawPrimitive(PrimitiveElement, const QStyleOption*, QPainter*, const QWidget*) const override;
    void drawControl(ControlElement, const QStyleOption*, QPainter*, const QWidget*) const override;
    void drawComplexControl(ComplexControl, const QStyleOptionComplex*, QPainter*, const QWidget*) const override;
};

KitStyle::KitStyle() : QProxyStyle(u"Fusion"_s) {}

void KitStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    if (qobject_cast<QMenu*>(widget)) popups::prepare(*widget);
}

int KitStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
    case PM_ScrollBarExtent: return scrollExtent;
    case PM_MenuPanelWidth: return 1;
    case PM_MenuHMargin:
    case PM_MenuVMargin: return menus::padding;
    case PM_MenuTearoffHeight: return 0;
    case PM_SubMenuOverlap: return -2;
    case PM_MenuBarPanelWidth: return 0;
    case PM_MenuBarItemSpacing: return 2;
    case PM_MenuBarHMargin: return 8;
    case PM_MenuBarVMargin: return 2;
    default: return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int KitStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                        QStyleHintReturn* out) const {
    switch (hint) {
    case SH_ScrollBar_Transient:
    case SH_EtchDisabledText:
    case SH_DitherDisabledText: return 0;
    case SH_ScrollBar_LeftClickAbsolutePosition:
    case SH_Menu_Scrollable: return 1;
    case SH_Menu_Mask:
        if (auto* mask = qstyleoption_cast<QStyleHintReturnMask*>(out); mask && widget && popups::isShaped(*widget)) {
            mask->region = popups::shape(widget->rect());
            return 1;
        }
        return 0;
    default: return QProxyStyle::styleHint(hint, option, widget, out);
    }
}

QSize KitStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                                 const QWidget* widget) const {
    const auto* entry = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (type == CT_MenuItem && entry) return menus::entrySize(*entry);
    if (type == CT_MenuBarItem) return {contents.width() + 20, menus::entryHeight};
    return QProxyStyle::sizeFromContents(type, option, contents, widget);
}

QRect KitStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                               const QWidget* widget) const {
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control == CC_ScrollBar && slider) return scrollPart(*slider, part).translated(option->rect.topLeft());
    // 10, a symbol of 12, a gap of 8; the line edit itself adds 2 before its text.
    if (control == CC_SpinBox && part == SC_SpinBoxEditField && isKitField(widget))
        return option->rect.adjusted(28, 0, -2, 0);
    return QProxyStyle::subControlRect(control, option, part, widget);
}

void KitStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
    switch (element) {
    case PE_PanelLineEdit: return paintLineEdit(*painter, *option);
    case PE_FrameLineEdit:
    case PE_FrameMenu: return; // drawn with the panel
    case PE_PanelMenu:
        if (widget) popups::paint(*painter, *widget);
        return;
    default: QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void KitStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                           const QWidget* widget) const {
    const auto* entry = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (element == CE_MenuItem && entry) return menus::paintEntry(*painter, *entry, widget);
    if (element == CE_MenuBarItem && entry) return menus::paintBarEntry(*painter, *entry);
    if (element == CE_MenuEmptyArea) return;
    if (element == CE_MenuBarEmptyArea)
        return painter->fillRect(option->rect, Theme::surface.in(appearanceOf(QGuiApplication::palette())).color());
    QProxyStyle::drawControl(element, option, painter, widget);
}

void KitStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                  const QWidget* widget) const {
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control == CC_ScrollBar && slider) return paintScrollBar(*painter, *slider);
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

// A row of the sidebar, a chip or an offer: pressing it is its only action. The action of a check box would be wrong,
// for a click on a chip selects nothing by itself.
class Choice final : public QAccessibleWidget {
  public:
    Choice(QAbstractButton& button, QAccessible::Role role)
        : QAccessibleWidget(&button, role, button.text()), button_(button) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        const bool row = role() == QAccessible::ListItem;
        state.focusable = state.focusable || row;
        state.selectable = row;
        state.selected = row && button_.isChecked();
        state.checkable = button_.isCheckable() && !row;
        state.checked = state.checkable && button_.isChecked();
        return state;
    }
    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString& name) override {
        if (name == pressAction())
            button_.click();
        else
            QAccessibleWidget::doAction(name);
    }

  private:
    QAbstractButton& button_;
};

class Ring final : public QAccessibleWidget, public QAccessibleValueInterface {
  public:
    explicit Ring(ProgressRing& ring) : QAccessibleWidget(&ring, QAccessible::ProgressBar), ring_(ring) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QVariant currentValue() const override { return ring_.done(); }
    void setCurrentValue(const QVariant&) override {}
    QVariant maximumValue() const override { return ring_.total(); }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }

  private:
    ProgressRing& ring_;
};

// Roles, states and actions of those painted widgets to which Qt gives none.
QAccessibleInterface* kitAccessible(const QString&, QObject* object) {
    if (auto* row = qobject_cast<SidebarRow*>(object)) return new Choice(*row, QAccessible::ListItem);
    if (auto* chip = qobject_cast<Chip*>(object)) return new Choice(*chip, QAccessible::RadioButton);
    if (auto* offer = qobject_cast<Offer*>(object)) return new Choice(*offer, QAccessible::Notification);
    if (auto* ring = qobject_cast<ProgressRing*>(object)) return new Ring(*ring);
    if (auto* list = qobject_cast<SidebarList*>(object)) return new QAccessibleWidget(list, QAccessible::List);
    if (auto* page = qobject_cast<DravelPage*>(object)) return new QAccessibleWidget(page, QAccessible::Pane);
    if (auto* toast = qobject_cast<Toast*>(object)) return new QAccessibleWidget(toast, QAccessible::Notification);
    for (auto* group :
         {static_cast<QWidget*>(qobject_cast<SettingRow*>(object)), static_cast<QWidget*>(qobject_cast<Card*>(object)),
          static_cast<QWidget*>(qobject_cast<SidebarBadge*>(object)),
          static_cast<QWidget*>(qobject_cast<DatePopup*>(object))})
        if (group) return new QAccessibleWidget(group, QAccessible::Grouping);
    return nullptr;
}

bool isAboutText(QAccessible::Event type) {
    using enum QAccessible::Event;
    return type == TextCaretMoved || type == TextSelectionChanged || type == TextInserted || type == TextRemoved ||
           type == TextUpdated;
}

// Qt tells of the focus after focusInEvent(). A widget that handed it on would be spoken of last. And a screen reader
// that hears of a field's text before it hears that the field has the focus takes it for known, and never names it.
void inSpokenOrder(QAccessibleEvent* event) {
    static QPointer<QObject> focus; // the last that was told of
    if (event->type() == QAccessible::Focus) {
        if (event->object() && event->object()->property(handsFocusOn).toBool()) return;
        focus = event->object();
    }
    if (isAboutText(event->type()) && focus && focus != event->object()) return;
    QAccessible::installUpdateHandler(nullptr);
    QAccessible::updateAccessibility(event);
    QAccessible::installUpdateHandler(inSpokenOrder);
}

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

// A desktop that changes its theme puts its own style into every running program, and so ends the kit's: which then is
// set again. When the application ends there is nobody left to tell.
void setKitStyle(QApplication& application) {
    auto* style = new KitStyle;
    QObject::connect(
        style, &QObject::destroyed, &application, [&application] { setKitStyle(application); }, Qt::QueuedConnection);
    QApplication::setStyle(style);
}

}

void installLook(QApplication& application, Appearance appearance) {
    QAccessible::installFactory(kitAccessible);
    QAccessible::installUpdateHandler(inSpokenOrder);
    setKitStyle(application);
    QApplication::setFont(Theme::font(Theme::Typography::body));
    setAppearance(appearance);
}

void translateQt(QApplication& application) {
    auto* french = new QTranslator(&application);
    if (french->load(u"qtbase_fr"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(french);
}

void setAppearance(Appearance appearance) {
    const QPalette palette = themePalette(appearance);
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

void setMotion(bool wanted) { qApp->setProperty(still, !wanted); }

bool animates(const QWidget& widget) {
    return !qApp->property(still).toBool() &&
           widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget) > 0;
}

void markDestructive(QAction& action) { action.setProperty(menus::destructive, true); }

}
