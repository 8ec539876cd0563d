#include "DravelKit/DravelUI/KitAccessible.h"

#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/DravelUI/Chip.h"
#include "DravelKit/DravelUI/DatePopup.h"
#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/DravelUI/ProgressRing.h"
#include "DravelKit/DravelUI/SettingsCard.h"
#include "DravelKit/DravelUI/SidebarBadge.h"
#include "DravelKit/DravelUI/SidebarList.h"
#include "DravelKit/DravelUI/SidebarRow.h"
#include "DravelKit/DravelUI/Toast.h"

#include <QAccessibleWidget>

namespace dravel {
namespace {

// A row of the sidebar or a chip: pressing it is its only action. The action of a check box would be wrong, for a click
// on a chip selects nothing by itself.
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
        state.checkable = !row;
        state.checked = !row && button_.isChecked();
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

}

QAccessibleInterface* kitAccessible(const QString&, QObject* object) {
    if (auto* row = qobject_cast<SidebarRow*>(object)) return new Choice(*row, QAccessible::ListItem);
    if (auto* chip = qobject_cast<Chip*>(object)) return new Choice(*chip, QAccessible::RadioButton);
    if (auto* ring = qobject_cast<ProgressRing*>(object)) return new Ring(*ring);
    if (auto* list = qobject_cast<SidebarList*>(object)) return new QAccessibleWidget(list, QAccessible::List);
    if (auto* toast = qobject_cast<Toast*>(object)) return new QAccessibleWidget(toast, QAccessible::Notification);
    for (auto* group :
         {static_cast<QWidget*>(qobject_cast<SettingRow*>(object)), static_cast<QWidget*>(qobject_cast<Card*>(object)),
          static_cast<QWidget*>(qobject_cast<SidebarBadge*>(object)),
          static_cast<QWidget*>(qobject_cast<DatePopup*>(object))})
        if (group) return new QAccessibleWidget(group, QAccessible::Grouping);
    return nullptr;
}

}
