#include "DravelKit/DravelUI/DatePopup.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/DayCell.h"
#include "DravelKit/DravelUI/Popup.h"
#include "DravelKit/DravelUI/TextLabel.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QLocale>
#include <QPainter>
#include <QScreen>

#include <algorithm>
#include <array>

namespace dravel {
namespace {

constexpr int padding = 12, monthLine = 28, initialsLine = 28, cellWidth = 32, cellHeight = 30, weeks = 6;
constexpr QSize wholeSize{248, padding + monthLine + initialsLine + weeks* cellHeight + padding};

const QLocale& french() {
    static const QLocale locale(QLocale::French, QLocale::France);
    return locale;
}

QString capitalised(const QString& text) { return text.left(1).toUpper() + text.mid(1); }

}

QDate DatePopup::firstDayShown(QDate month) {
    const QDate first(month.year(), month.month(), 1);
    return first.addDays(Qt::Monday - first.dayOfWeek());
}

DatePopup::DatePopup(QDate selected, QDate today, QWidget* parent)
    : QWidget(parent, Qt::Popup), selected_(selected), today_(today), cursor_(selected),
      month_(new TextLabel(Theme::Typography::subtitle, Theme::text, {}, this)) {
    setObjectName(QStringLiteral("datePopup"));
    setAccessibleName(QStringLiteral("Choisir une date"));
    setAttribute(Qt::WA_DeleteOnClose);
    setFixedSize(wholeSize);
    popups::prepare(*this);
    if (popups::isShaped(*this)) setMask(popups::shape(rect()));
    month_->setObjectName(QStringLiteral("month"));
    month_->setAlignment(Qt::AlignHCenter);
    month_->setGeometry(padding + monthLine, padding, wholeSize.width() - 2 * (padding + monthLine), monthLine);

    const auto chevron = [this](Symbol symbol, const QString& name, int x, int months) {
        auto* button = new IconButton(symbol, name, this);
        button->setObjectName(months < 0 ? QStringLiteral("previousMonth") : QStringLiteral("nextMonth"));
        button->setSymbolSize(12);
        button->setFaceSize({monthLine, monthLine});
        button->setGeometry(x, padding, monthLine, monthLine);
        connect(button, &QAbstractButton::clicked, this, [this, months] { moveTo(cursor_.addMonths(months)); });
    };
    chevron(Symbol::ChevronLeft, QStringLiteral("Mois précédent"), padding, -1);
    chevron(Symbol::ChevronRight, QStringLiteral("Mois suivant"), wholeSize.width() - padding - monthLine, 1);
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
    month_->setText(capitalised(french().toString(cursor_, QStringLiteral("MMMM yyyy"))));
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

}
