#include "Tacla/MainWindow/Pages/ListPages.h"

#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/Pages/ProblemsCard.h"
#include "Tacla/MainWindow/Pages/TaskColumn.h"
#include "Tacla/MainWindow/QtText.h"
#include "Tacla/MainWindow/RefreshWhileVisible.h"
#include "Tacla/MainWindow/Section.h"

namespace tacla {

using namespace Qt::StringLiterals;
using dravel::EmptyCard;
using dravel::Symbol;

namespace {

QString pageName(Section section) { return toQt("page." + std::string(rawValue(section))); }

}

LatePage::LatePage(AppModel& model, const dravel::Now& now, QWidget* parent)
    : DravelPage(toQt(title(Section::late)),
                 u"Cochez-les, ou reportez-les avec « … » : demain, lundi ou dans une semaine."_s, parent),
      model_(model), problems_(new ProblemsCard(&stage())),
      empty_(new EmptyCard(Symbol::HandThumbsUpFill, u"Aucun retard. 👌"_s, &stage())),
      tasks_(new TaskColumn(*this, model, now)) {
    setObjectName(pageName(Section::late));
    for (QWidget* card : std::initializer_list<QWidget*>{problems_, empty_, tasks_}) add(card);
    new RefreshWhileVisible(*this, model.changed, [this] { refresh(); });
    refresh();
}

void LatePage::refresh() {
    const auto& state = model_.state();
    auto groups = lateGroups(state);
    problems_->setProblems(problems(state));
    empty_->setVisible(groups.empty());
    tasks_->setGroups(std::move(groups), state.today);
}

UpcomingPage::UpcomingPage(AppModel& model, const dravel::Now& now, QWidget* parent)
    : DravelPage(toQt(title(Section::upcoming)), u"Jour par jour, dans l'ordre où elles sonneront."_s, parent),
      model_(model), empty_(new EmptyCard(Symbol::Calendar3, u"Rien de prévu pour la suite."_s, &stage())),
      tasks_(new TaskColumn(*this, model, now)) {
    setObjectName(pageName(Section::upcoming));
    add(empty_);
    add(tasks_);
    new RefreshWhileVisible(*this, model.changed, [this] { refresh(); });
    refresh();
}

void UpcomingPage::refresh() {
    const auto& state = model_.state();
    auto groups = upcomingGroups(state);
    empty_->setVisible(groups.empty());
    tasks_->setGroups(std::move(groups), state.today);
}

DonePage::DonePage(AppModel& model, const dravel::Now& now, QWidget* parent)
    : DravelPage(toQt(title(Section::done)), toQt(donePageSubtitle(model.state())), parent), model_(model),
      empty_(new EmptyCard(Symbol::CheckCircle, u"Rien de coché pour l'instant."_s, &stage())),
      tasks_(new TaskColumn(*this, model, now)) {
    setObjectName(pageName(Section::done));
    add(empty_);
    add(tasks_);
    new RefreshWhileVisible(*this, model.changed, [this] { refresh(); });
    refresh();
}

void DonePage::refresh() {
    const auto& state = model_.state();
    setSubtitle(toQt(donePageSubtitle(state)));
    auto groups = doneGroups(state);
    empty_->setVisible(groups.empty());
    tasks_->setGroups(std::move(groups), state.today);
}

}
