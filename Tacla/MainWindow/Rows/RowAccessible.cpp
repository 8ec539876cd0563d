#include "Tacla/MainWindow/Rows/RowAccessible.h"

#include "Tacla/MainWindow/Pages/TaskListCard.h"
#include "Tacla/MainWindow/Rows/TaskRow.h"

#include <QAccessibleWidget>

namespace tacla {

namespace {

QAccessibleInterface* rowAccessible(const QString&, QObject* object) {
    if (auto* row = qobject_cast<TaskRow*>(object)) return new QAccessibleWidget(row, QAccessible::ListItem);
    if (auto* card = qobject_cast<TaskListCard*>(object)) return new QAccessibleWidget(card, QAccessible::List);
    return nullptr;
}

}

void installRowAccessibility() {
    QAccessible::removeFactory(rowAccessible); // a second window must not ask twice
    QAccessible::installFactory(rowAccessible);
}

}
