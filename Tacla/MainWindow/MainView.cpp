#include "Tacla/MainWindow/MainView.h"

#include "DravelKit/DravelLogo/TickIcon.h"
#include "DravelKit/DravelUI/DravelShell.h"
#include "DravelKit/DravelUI/SidebarBadge.h"
#include "DravelKit/DravelUI/SidebarList.h"
#include "DravelKit/DravelUI/Toast.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/Pages/ListPage.h"
#include "Tacla/MainWindow/Pages/SettingsPage.h"
#include "Tacla/MainWindow/Pages/TaskPages.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/MainWindow/Rows/RowAccessible.h"
#include "Tacla/MainWindow/SyncBadge.h"
#include "Tacla/MainWindow/WelcomeView.h"

#include <QShortcut>
#include <QStackedLayout>

namespace tacla {

using namespace Qt::StringLiterals;

MainView::MainView(AppModel& model, DesktopActions actions, dravel::Now now, QWidget* parent)
    : QWidget(parent), model_(model), actions_(std::move(actions)), now_(std::move(now)),
      views_(new QStackedLayout(this)) {
    setObjectName(u"main"_s);
    installRowAccessibility();
    addShortcuts();
    // The view starts on today. A request from before its time is dropped: else the same one could not come again.
    if (const auto& stale = model.state().requestedSection; stale && sectionNamed(*stale)) model.requestSection({});
    requested_ = model.state().requestedSection;
    connection_ = model.changed.connect([this] { modelChanged(); });
    showWelcomeOrPages();
}

void MainView::modelChanged() {
    if (model_.state().onboarding != (views_->currentWidget() == welcome_)) {
        showWelcomeOrPages();
        beginTask(); // what a new user came for
    }
    if (shell_ && model_.state().undoBar != undoBar_) showUndoBar();
    const auto wanted = model_.state().requestedSection;
    if (wanted == requested_) return;
    requested_ = wanted;
    const auto section = wanted ? sectionNamed(*wanted) : std::nullopt;
    if (!section) return;
    select(*section);
    model_.requestSection({});
}

void MainView::showWelcomeOrPages() {
    if (!model_.state().onboarding) {
        views_->setCurrentWidget(&shell());
        return;
    }
    if (!welcome_) {
        welcome_ = new WelcomeView(model_, actions_, this);
        views_->addWidget(welcome_);
    }
    views_->setCurrentWidget(welcome_);
}

dravel::DravelShell& MainView::shell() {
    if (shell_) return *shell_;
    shell_ = new dravel::DravelShell(u"Tacla"_s, dravel::tickIcon(), u"Pages"_s, this);
    auto& list = shell_->list();
    for (const auto section : sections)
        list.addRow(symbol(section), toQt(title(section)), toQt("section." + std::string(rawValue(section))));
    list.setCurrent(static_cast<int>(section_));
    connect(&list, &dravel::SidebarList::currentChanged, this, [this](int row) {
        section_ = sections[static_cast<std::size_t>(row)];
        showPage();
    });
    shell_->setFoot(makeSyncBadge(model_, shell_));
    connect(&shell_->toast(), &dravel::Toast::acted, this, [this] { model_.undo(); });
    views_->addWidget(shell_);
    showPage();
    showUndoBar();
    return *shell_;
}

void MainView::select(Section section) {
    section_ = section;
    if (shell_) shell_->list().setCurrent(static_cast<int>(section));
}

void MainView::beginTask() {
    if (views_->currentWidget() != shell_) return;
    select(Section::today);
    static_cast<TodayPage*>(shell_->page())->beginTask();
}

void MainView::showPage() {
    auto*& page = pages_[static_cast<std::size_t>(section_)];
    if (!page) page = makePage(section_);
    shell_->showPage(page);
}

void MainView::showUndoBar() {
    undoBar_ = model_.state().undoBar;
    if (undoBar_)
        shell_->toast().tell(toQt(undoBar_->text), undoBar_->offersUndo ? u"Annuler"_s : QString());
    else
        shell_->toast().dismiss();
}

QWidget* MainView::makePage(Section section) {
    switch (section) {
    case Section::today: return new TodayPage(model_, now_, shell_);
    case Section::late:
    case Section::upcoming:
    case Section::done: return new ListPage(section, model_, now_, shell_);
    case Section::settings: break;
    }
    return new SettingsPage(model_, actions_, shell_);
}

// Ctrl+1 to Ctrl+5.
void MainView::addShortcuts() {
    for (const auto section : sections) {
        const QKeySequence keys(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + static_cast<int>(section)));
        connect(new QShortcut(keys, this), &QShortcut::activated, this, [this, section] {
            if (views_->currentWidget() == shell_) select(section);
        });
    }
}

}
