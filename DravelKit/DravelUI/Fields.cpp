#include "DravelKit/DravelUI/Fields.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/MenuStyle.h"
#include "DravelKit/DravelUI/Symbols.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "DravelKit/DravelUI/TextPaint.h"
#include "DravelKit/DravelUI/Theme.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QtMath>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace dravel {

using namespace Qt::StringLiterals;

namespace {

constexpr int padding = 12, monthLine = 28, initialsLine = 28, cellWidth = 32, cellHeight = 30, weeks = 6;
constexpr QSize wholeSize{248, padding + monthLine + initialsLine + weeks* cellHeight + padding};

const QLocale& french() {
    static const QLocale locale(QLocale::French, QLocale::France);
    return locale;
}

QString capitalised(const QString& text) { return text.left(1).toUpper() + text.mid(1); }

}

// One day of the month.
class DatePopup::DayCell final : public Control {
  public:
    struct Day {
        QDate date;
        bool today, selected, otherMonth;
    };

    explicit DayCell(QWidget* parent) : Control(parent) { setCheckable(true); }
    void setDay(const Day&);
    QDate date() const { return day_.date; }

  protected:
    void paint(QPainter&) override;
    void keyPressEvent(QKeyEvent*) override;

  private:
    Day day_{};
};

void DatePopup::DayCell::setDay(const Day& day) {
    day_ = day;
    setText(QString::number(day.date.day()));
    setAccessibleName(french().toString(day.date, u"dddd d MMMM yyyy"_s));
    setChecked(day.selected);
    update();
}

// Arrows belong to the month around it.
void DatePopup::DayCell::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space: Control::keyPressEvent(event); break;
    default: event->ignore();
    }
}

void DatePopup::DayCell::paint(QPainter& painter) {
    const auto fill = [this]() -> std::optional<Theme::Tone> {
        if (day_.selected) return Theme::accent;
        if (day_.today) return Theme::accentSoft;
        if (isHovered()) return Theme::tile;
        return {};
    }();
    if (fill) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill->on(*this));
        painter.drawRoundedRect(rect().adjusted(1, 1, -1, -1), faceRadius(), faceRadius());
    }
    const auto& ink = day_.selected     ? Theme::onAccent
                      : day_.today      ? Theme::accentOnSoft
                      : day_.otherMonth ? Theme::textTertiary
                                        : Theme::text;
    Theme::TextStyle style = Theme::Typography::callout;
    if (day_.selected || day_.today) style.weight = QFont::DemiBold;
    paintLine(painter, rect(), style, ink.on(*this), text(), Qt::AlignHCenter);
}

QDate DatePopup::firstDayShown(QDate month) {
    const QDate first(month.year(), month.month(), 1);
    return first.addDays(Qt::Monday - first.dayOfWeek());
}

DatePopup::DatePopup(QDate selected, QDate today, QWidget* parent)
    : QWidget(parent, Qt::Popup), selected_(selected), today_(today), cursor_(selected),
      month_(new TextLabel(Theme::Typography::subtitle, Theme::text, {}, this)) {
    setObjectName(u"datePopup"_s);
    setAccessibleName(u"Choisir une date"_s);
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedSize(wholeSize);
    popups::prepare(*this);
    if (popups::isShaped(*this)) setMask(popups::shape(rect()));
    month_->setObjectName(u"month"_s);
    month_->setAlignment(Qt::AlignHCenter);
    month_->setGeometry(padding + monthLine, padding, wholeSize.width() - 2 * (padding + monthLine), monthLine);

    const auto chevron = [this](Symbol symbol, const QString& name, int x, int months) {
        auto* button = new IconButton(symbol, name, this);
        button->setObjectName(months < 0 ? u"previousMonth"_s : u"nextMonth"_s);
        button->setSymbolSize(12);
        button->setFaceSize({monthLine, monthLine});
        button->setGeometry(x, padding, monthLine, monthLine);
        connect(button, &QAbstractButton::clicked, this, [this, months] { moveTo(cursor_.addMonths(months)); });
    };
    chevron(Symbol::chevronLeft, u"Mois précédent"_s, padding, -1);
    chevron(Symbol::chevronRight, u"Mois suivant"_s, wholeSize.width() - padding - monthLine, 1);
    for (int index = 0; index < 7 * weeks; ++index) {
        auto* cell = new DayCell(this);
        cell->setGeometry(padding + index % 7 * cellWidth, padding + monthLine + initialsLine + index / 7 * cellHeight,
                          cellWidth, cellHeight);
        connect(cell, &QAbstractButton::clicked, this, [this, cell] { pick(cell->date()); });
        cells_.append(cell);
    }
    refresh();
}

void DatePopup::showUnder(const QWidget& field) {
    QPoint corner = field.mapToGlobal(QPoint(0, field.height() + 4));
    if (const QScreen* screen = field.screen()) {
        const QRect room = screen->availableGeometry();
        corner.setX(std::clamp(corner.x(), room.left(), std::max(room.left(), room.right() - width())));
        if (corner.y() + height() > room.bottom()) corner.setY(field.mapToGlobal(QPoint()).y() - height() - 4);
    }
    move(corner);
    show();
    focusCursor(Qt::PopupFocusReason);
}

void DatePopup::pick(QDate day) {
    Q_EMIT picked(day);
    close();
}

void DatePopup::moveTo(QDate day) {
    if (!day.isValid()) return;
    cursor_ = day;
    refresh();
}

void DatePopup::refresh() {
    month_->setText(capitalised(french().toString(cursor_, u"MMMM yyyy"_s)));
    const QDate first = firstDayShown(cursor_);
    for (int index = 0; index < cells_.size(); ++index) {
        const QDate date = first.addDays(index);
        cells_[index]->setDay({date, date == today_, date == selected_, date.month() != cursor_.month()});
        cells_[index]->setObjectName(date.toString(Qt::ISODate));
        cells_[index]->setFocusPolicy(date == cursor_ ? Qt::TabFocus : Qt::NoFocus); // one stop of the Tab key
    }
}

void DatePopup::focusCursor(Qt::FocusReason reason) {
    const auto at = static_cast<qsizetype>(firstDayShown(cursor_).daysTo(cursor_));
    cells_[at]->setFocus(reason);
}

void DatePopup::keyPressEvent(QKeyEvent* event) {
    const auto go = [this](QDate day) {
        moveTo(day);
        focusCursor(Qt::TabFocusReason);
    };
    switch (event->key()) {
    case Qt::Key_Left: return go(cursor_.addDays(-1));
    case Qt::Key_Right: return go(cursor_.addDays(1));
    case Qt::Key_Up: return go(cursor_.addDays(-7));
    case Qt::Key_Down: return go(cursor_.addDays(7));
    case Qt::Key_PageUp: return go(cursor_.addMonths(-1));
    case Qt::Key_PageDown: return go(cursor_.addMonths(1));
    case Qt::Key_Home: return go(QDate(cursor_.year(), cursor_.month(), 1));
    case Qt::Key_End: return go(QDate(cursor_.year(), cursor_.month(), cursor_.daysInMonth()));
    case Qt::Key_Escape: close(); return;
    default: QWidget::keyPressEvent(event);
    }
}

void DatePopup::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    popups::paint(painter, *this);
    static constexpr std::array initials{u"L", u"M", u"M", u"J", u"V", u"S", u"D"};
    for (int day = 0; day < 7; ++day) {
        const QRect box(padding + day * cellWidth, padding + monthLine, cellWidth, initialsLine);
        paintLine(painter, box, Theme::Typography::caption, Theme::textTertiary.on(*this),
                  QString::fromUtf16(initials.at(static_cast<std::size_t>(day))), Qt::AlignHCenter);
    }
}

namespace {

constexpr int symbolLeft = 10, symbolSize = 12, textLeft = 30, height = 28;
constexpr auto& type = Theme::Typography::callout;

void prepare(QDateTimeEdit& field, const QString& format, const QString& accessibleName) {
    field.setDisplayFormat(format);
    field.setButtonSymbols(QAbstractSpinBox::NoButtons);
    field.setFrame(false);
    field.setFont(Theme::font(type));
    field.setAccessibleName(accessibleName);
    field.setWrapping(true);
    field.setCorrectionMode(QAbstractSpinBox::CorrectToNearestValue);
    QObject::connect(&field, &QDateTimeEdit::dateTimeChanged, &field, &QWidget::updateGeometry);
    field.setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void paintField(QWidget& field, Symbol symbol, bool focused) {
    QPainter painter(&field);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!field.isEnabled()) painter.setOpacity(0.4);
    const qreal inset = focused ? 1 : 0;
    painter.setPen(focused ? QPen(Theme::accent.on(field), 2) : QPen(Qt::NoPen));
    painter.setBrush(Theme::tile.on(field));
    painter.drawRoundedRect(QRectF(field.rect()).adjusted(inset, inset, -inset, -inset), Theme::Radius::sm - inset,
                            Theme::Radius::sm - inset);
    paintSymbol(painter, QRectF(symbolLeft, 0, symbolSize, field.height()), symbol, symbolSize,
                Theme::textTertiary.on(field));
}

QSize sizeFor(const QString& text) {
    return {textLeft + qCeil(QFontMetricsF(Theme::font(type)).horizontalAdvance(text)) + 10, height};
}

}

TypedSections::TypedSections(std::vector<Section> sections, QString separators)
    : sections_(std::move(sections)), separators_(std::move(separators)) {
    split();
}

bool TypedSections::take(const QKeyEvent& key, int currentSection) {
    if (key.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) return false;
    if (typed_.isEmpty()) first_ = currentSection;
    if (key.key() == Qt::Key_Backspace && !typed_.isEmpty())
        typed_.chop(1);
    else if (key.text().size() == 1 && (key.text().front().isDigit() || separators_.contains(key.text())))
        typed_ += key.text();
    else
        return false;
    split();
    return true;
}

void TypedSections::split() {
    parts_ = QStringList(static_cast<qsizetype>(sections_.size()));
    at_ = first_;
    for (const QChar sign : std::as_const(typed_)) {
        if (at_ == static_cast<int>(sections_.size())) return;
        auto& part = parts_[at_];
        const auto& [width, greatestFirst] = sections_[static_cast<std::size_t>(at_)];
        if (sign.isDigit()) part += sign;
        const bool full = part.size() == width || part.toInt() > greatestFirst;
        if (full || (!sign.isDigit() && !part.isEmpty())) ++at_;
    }
}

std::optional<int> TypedSections::number(int section) const {
    const auto& part = parts_.at(section);
    return part.isEmpty() ? std::nullopt : std::optional(part.toInt());
}

DateField::DateField(const QString& accessibleName, QWidget* parent)
    : QDateEdit(parent), typed_({{2, 3}, {2, 1}, {4, 9999}}, u"/-. "_s) {
    prepare(*this, u"dd/MM/yyyy"_s, accessibleName);
}

DateField::~DateField() { delete popup_; }

QSize DateField::sizeHint() const { return sizeFor(text()); }

DatePopup* DateField::popup() const { return popup_ && popup_->isVisible() ? popup_.get() : nullptr; }

void DateField::openPopup() {
    if (popup()) return;
    popup_ = new DatePopup(date(), today_.isValid() ? today_ : QDate::currentDate(), this);
    connect(popup_, &DatePopup::picked, this, &QDateEdit::setDate);
    popup_->showUnder(*this);
}

void DateField::paintEvent(QPaintEvent*) { paintField(*this, Symbol::calendar4, hasFocus()); }

void DateField::keyPressEvent(QKeyEvent* event) {
    const bool down = event->key() == Qt::Key_Down && event->modifiers().testFlag(Qt::AltModifier);
    if (down || event->key() == Qt::Key_F4) return openPopup();
    if (!typed_.isTyping()) before_ = date();
    if (!typed_.take(*event, currentSectionIndex())) {
        typed_.clear();
        return QDateEdit::keyPressEvent(event);
    }
    setDate(typedDate());
    setSelectedSection(sectionAt(typed_.section()));
}

void DateField::focusOutEvent(QFocusEvent* event) {
    typed_.clear();
    QDateEdit::focusOutEvent(event);
}

// Without a year, and without a month, the next one: unless the field already stood in the past.
QDate DateField::typedDate() const {
    const auto built = [](int year, int month, int day) {
        const QDate first(year, std::clamp(month, 1, 12), 1);
        return first.addDays(std::clamp(day, 1, first.daysInMonth()) - 1);
    };
    const int day = typed_.number(0).value_or(before_.day()), month = typed_.number(1).value_or(before_.month());
    const auto digits = typed_.digits(2);
    const int number = typed_.number(2).value_or(0);
    const auto year = digits == 2 ? 2000 + number : digits == 4 ? number : before_.year();
    const auto date = built(std::max(year, 1), month, day);
    const auto today = today_.isValid() ? today_ : QDate::currentDate();
    if (digits > 0 || date >= today || before_ < today) return date;
    if (typed_.number(1)) return built(year + 1, month, day);
    return built(year + month / 12, month % 12 + 1, day);
}

// By whatever way it came in, a year of two digits is meant to be one of this century.
QDateTime DateField::dateTimeFromText(const QString& text) const {
    auto read = QDateEdit::dateTimeFromText(text);
    if (read.date().year() >= 100 || text == textFromDateTime(dateTime())) return read;
    return read.addYears(2000);
}

void DateField::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) return openPopup(); // the digits lie in the line edit, which has its own
    QDateEdit::mousePressEvent(event);
}

TimeField::TimeField(const QString& accessibleName, QWidget* parent)
    : QTimeEdit(parent), typed_({{2, 2}, {2, 5}}, u":hH. "_s) {
    prepare(*this, u"HH:mm"_s, accessibleName);
}

void TimeField::focusOutEvent(QFocusEvent* event) {
    typed_.clear();
    QTimeEdit::focusOutEvent(event);
}

void TimeField::keyPressEvent(QKeyEvent* event) {
    if (!typed_.take(*event, currentSectionIndex())) {
        typed_.clear();
        return QTimeEdit::keyPressEvent(event);
    }
    const int hour = typed_.number(0).value_or(time().hour());
    const bool hourAlone = typed_.section() == 1 && typed_.digits(1) == 0; // "14" is 14:00
    const int minute = typed_.number(1).value_or(hourAlone ? 0 : time().minute());
    setTime({std::min(hour, 23), std::min(minute, 59)});
    setSelectedSection(sectionAt(typed_.section()));
}

QSize TimeField::sizeHint() const { return sizeFor(text()); }

void TimeField::paintEvent(QPaintEvent*) { paintField(*this, Symbol::clock, hasFocus()); }

}
