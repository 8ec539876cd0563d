#include "Tacla/MainWindow/Pages/TaskListCard.h"

#include "DravelKit/DravelUI/TextLabel.h"
#include "Tacla/MainWindow/Pages/ColumnPlan.h"
#include "Tacla/MainWindow/QtValues.h"

namespace tacla {

namespace Theme = dravel::Theme;
using namespace Qt::StringLiterals;

TaskListCard::TaskListCard(QWidget* parent)
    : Card(parent), header_(new dravel::CardHeader(dravel::Symbol::Calendar3, Theme::accent, {}, this)),
      empty_(new dravel::TextLabel(Theme::Typography::body, Theme::textSecondary, {}, this)) {
    setObjectName(u"tasks"_s);
}

void TaskListCard::setGroup(const TaskGroup& group) {
    const auto title = toQt(group.title());
    setAccessibleName(title);
    header_->setTitle(title);
    header_->setSymbol(group.symbol, toneOf(group.role));
    header_->setCount(static_cast<int>(group.tasks.size()));
    empty_->setText(toQt(group.empty));
    empty_->setVisible(group.tasks.empty());
}

void TaskListCard::resizeEvent(QResizeEvent* event) {
    Card::resizeEvent(event);
    constexpr int rowsTop = ColumnLayout::cardPadding + ColumnLayout::headerHeight;
    header_->setGeometry(0, ColumnLayout::cardPadding, width(), ColumnLayout::headerHeight);
    empty_->setGeometry(textColumn, rowsTop + 4, width() - textColumn - 2 * ColumnLayout::cardPadding, 18);
}

}
