#include "DravelKit/DravelUI/SidebarList.h"

#include "DravelKit/DravelUI/SidebarRow.h"

#include <QAccessible>
#include <QKeyEvent>

#include <algorithm>

namespace dravel {
namespace {

constexpr int rowHeight = 36, rowGap = 4;

}

SidebarList::SidebarList(const QString& accessibleName, QWidget* parent) : QWidget(parent) {
    setAccessibleName(accessibleName);
}

int SidebarList::addRow(Symbol symbol, const QString& title, const QString& objectName) {
    auto* row = new SidebarRow(symbol, title, this);
    const int index = count();
    row->setObjectName(objectName);
    row->setFocusPolicy(Qt::NoFocus);
    rows_.push_back(row);
    connect(row, &QAbstractButton::clicked, this, [this, index] { setCurrent(index); });
    if (index == 0) setCurrent(0);
    updateGeometry();
    return index;
}

void SidebarList::setCurrent(int index) {
    if (index == current_ || index < 0 || index >= count()) return;
    const bool focused = current_ >= 0 && rows_[static_cast<std::size_t>(current_)]->hasFocus();
    current_ = index;
    for (int at = 0; at < count(); ++at) {
        SidebarRow* row = rows_[static_cast<std::size_t>(at)];
        row->setChecked(at == index);
        row->setFocusPolicy(at == index ? Qt::TabFocus : Qt::NoFocus); // one stop of the Tab key
    }
    SidebarRow* chosen = rows_[static_cast<std::size_t>(index)];
    if (focused) chosen->setFocus(Qt::TabFocusReason);
    QAccessibleEvent selection(chosen, QAccessible::Selection);
    QAccessible::updateAccessibility(&selection);
    Q_EMIT currentChanged(index);
}

QSize SidebarList::sizeHint() const { return {186, count() * rowHeight + std::max(count() - 1, 0) * rowGap}; }

void SidebarList::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Up: setCurrent(std::max(current_ - 1, 0)); break;
    case Qt::Key_Down: setCurrent(std::min(current_ + 1, count() - 1)); break;
    case Qt::Key_Home: setCurrent(0); break;
    case Qt::Key_End: setCurrent(count() - 1); break;
    default: QWidget::keyPressEvent(event);
    }
}

void SidebarList::resizeEvent(QResizeEvent*) {
    for (int at = 0; at < count(); ++at)
        rows_[static_cast<std::size_t>(at)]->setGeometry(0, at * (rowHeight + rowGap), width(), rowHeight);
}

}
