#pragma once

#include <QAccessible>

namespace dravel {

// Roles, states and actions of those painted widgets to which Qt gives none.
QAccessibleInterface* kitAccessible(const QString& className, QObject*);

}
