#include "Tacla/MainWindow/Pages/TaskListCard.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/Pages/ColumnPlan.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/TaskList/Labels.h"

#include <QMenu>

namespace tacla {

namespace Theme = dravel::Theme;
using namespace Qt::StringLiterals;
using dravel::Button;

TaskListCard::TaskListCard(AppModel& model, const dravel::Now& now, QWidget* parent)
    : Card(parent), model_(model), now_(now),
      header_(new dravel::CardHeader(dravel::Symbol::calendar3, Theme::accent, {}, this)),
      postpone_(new Button(Button::Kind::neutral, u"Tout reporter"_s, header_)),
      empty_(new dravel::TextLabel(Theme::Typography::body, Theme::textSecondary, {}, this)) {
    setObjectName(u"tasks"_s);
    postpone_->setObjectName(u"postponeAll"_s);
    postpone_->hide();
    connect(postpone_, &QAbstractButton::clicked, this, &TaskListCard::offerDays);
}

void TaskListCard::setGroup(const TaskGroup& group) {
    const auto title = toQt(group.title());
    setAccessibleName(title);
    setAccessibleDescription(toQt(counted(group.tasks.size(), "tâche"))); // only some of them are there to be counted
    header_->setTitle(title);
    header_->setSymbol(group.symbol, toneOf(group.role));
    header_->setCount(static_cast<int>(group.tasks.size()));
    tasks_ = group.postponable ? group.tasks : TaskSelection();
    if (group.postponable) header_->setControl(postpone_);
    postpone_->setVisible(group.postponable);
    empty_->setText(toQt(group.empty));
    empty_->setVisible(group.tasks.empty());
}

QWidget& TaskListCard::postponeButton() { return *postpone_; }

void TaskListCard::offerDays() {
    auto* menu = new QMenu(this);
    menu->setObjectName(u"postponeAll.menu"_s);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (const auto& choice : postponements(Day::of(now_()))) {
        // The tasks as they are seen now: the list may be another one when an entry is chosen.
        const auto postpone = [this, day = choice.day, tasks = tasks_] { model_.list().postpone(tasks, day); };
        connect(menu->addAction(toQt(choice.label)), &QAction::triggered, this, postpone);
    }
    const QPoint corner(postpone_->width() - menu->sizeHint().width(), postpone_->height() + 4);
    dravel::popUp(*menu, postpone_->mapToGlobal(corner));
}

void TaskListCard::resizeEvent(QResizeEvent* event) {
    Card::resizeEvent(event);
    constexpr int rowsTop = ColumnLayout::cardPadding + ColumnLayout::headerHeight;
    header_->setGeometry(0, ColumnLayout::cardPadding, width(), ColumnLayout::headerHeight);
    empty_->setGeometry(textColumn, rowsTop + 4, width() - textColumn - 2 * ColumnLayout::cardPadding, 18);
}

}
