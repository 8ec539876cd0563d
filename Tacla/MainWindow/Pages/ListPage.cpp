#include "Tacla/MainWindow/Pages/ListPage.h"

#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/Pages/ProblemsCard.h"
#include "Tacla/MainWindow/Pages/TaskColumn.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/MainWindow/RefreshWhileVisible.h"

namespace tacla {

ListPage::ListPage(Section section, AppModel& model, const dravel::Now& now, QWidget* parent)
    : DravelPage(toQt(title(section)), {}, parent), model_(model), problems_(new ProblemsCard(&stage())),
      tasks_(new TaskColumn(*this, model, now)) {
    setObjectName(toQt("page." + std::string(rawValue(section))));
    auto contents = listContents(section, model.state());
    empty_ = new dravel::EmptyCard(contents.emptySymbol, toQt(contents.empty), &stage());
    for (QWidget* card : std::initializer_list<QWidget*>{problems_, empty_, tasks_}) add(card);
    new RefreshWhileVisible(*this, model.changed, [this, section] { refresh(listContents(section, model_.state())); });
    refresh(std::move(contents));
}

void ListPage::refresh(ListContents contents) {
    setSubtitle(toQt(contents.subtitle));
    problems_->setProblems(std::move(contents.problems));
    empty_->setVisible(contents.groups.empty());
    tasks_->setGroups(std::move(contents.groups), model_.state().today);
}

}
