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

class Row final : public QAccessibleWidget {
  public:
    explicit Row(SidebarRow& row) : QAccessibleWidget(&row, QAccessible::ListItem, row.text()), row_(row) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.selectable = true;
        state.focusable = true;
        state.selected = row_.isChecked();
        return state;
    }
    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString& name) override {
        if (name == pressAction())
            row_.click();
        else
            QAccessibleWidget::doAction(name);
    }

  private:
    SidebarRow& row_;
};

// A click on a chip selects nothing by itself, so the action of a check box would be wrong.
class ChipButton final : public QAccessibleWidget {
  public:
    explicit ChipButton(Chip& chip) : QAccessibleWidget(&chip, QAccessible::RadioButton, chip.text()), chip_(chip) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = chip_.isChecked();
        return state;
    }
    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString& name) override {
        if (name == pressAction())
            chip_.click();
        else
            QAccessibleWidget::doAction(name);
    }

  private:
    Chip& chip_;
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
    if (auto* row = qobject_cast<SidebarRow*>(object)) return new Row(*row);
    if (auto* chip = qobject_cast<Chip*>(object)) return new ChipButton(*chip);
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
