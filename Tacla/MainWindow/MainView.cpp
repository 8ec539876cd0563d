#include "Tacla/MainWindow/MainView.h"

#include "DravelKit/DravelLogo/DravelLogo.h"
#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/DravelUI/DravelShell.h"
#include "DravelKit/DravelUI/KeysPanel.h"
#include "DravelKit/DravelUI/SidebarList.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/Pages/SettingsPage.h"
#include "Tacla/MainWindow/Pages/TaskColumn.h"
#include "Tacla/MainWindow/Pages/TaskPages.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/MainWindow/RefreshWhileVisible.h"
#include "Tacla/MainWindow/Rows/TaskRow.h"
#include "Tacla/TaskList/TaskFile.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QShortcut>
#include <QStackedLayout>
#include <QVBoxLayout>

#include <algorithm>

namespace tacla {

using namespace Qt::StringLiterals;
using dravel::Button;
using dravel::WelcomeStep;

// What the first launch shows instead of the pages.
class WelcomeView final : public QWidget {
  public:
    WelcomeView(AppModel&, const DesktopActions&, QWidget* parent = nullptr);

  private:
    void addSteps(dravel::WelcomePage&);
    void refresh();
    void connectAgenda();
    void refreshAgenda();

    AppModel& model_;
    const DesktopActions& actions_;
    dravel::WelcomeStep *list_ = nullptr, *notifications_ = nullptr, *agenda_ = nullptr, *tray_ = nullptr;
    dravel::WelcomePage* page_;
    Button* guide_ = nullptr;
};

WelcomeView::WelcomeView(AppModel& model, const DesktopActions& actions, QWidget* parent)
    : QWidget(parent), model_(model), actions_(actions) {
    auto* page = page_ = new dravel::WelcomePage(dravel::tickIcon(), u"Tacla"_s,
                                                 u"Vos tâches dans un simple fichier texte, cochées depuis la zone de "
                                                 u"notification, rappelées à l'heure dite et, "
                                                 u"si vous le souhaitez, recopiées dans votre Google Agenda."_s,
                                                 u"C'est parti"_s, this);
    page->setObjectName(u"welcome"_s);
    page->setAccessibleName(u"Bienvenue"_s);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->addWidget(page);
    addSteps(*page);
    page->closingButton().setObjectName(u"welcome.close"_s);
    connect(&page->closingButton(), &QAbstractButton::clicked, this, [this] { model_.finishOnboarding(); });
    new RefreshWhileVisible(*this, model.changed, [this] { refresh(); });
    refresh();
}

void WelcomeView::addSteps(dravel::WelcomePage& page) {
    list_ = page.addStep(new WelcomeStep(
        u"Votre liste de tâches"_s,
        u"Un fichier Markdown sur votre ordinateur, que vous pouvez aussi modifier dans votre éditeur."_s));
    list_->setButton(u"Changer…"_s);
    list_->button().setObjectName(u"welcome.list"_s);
    connect(&list_->button(), &QAbstractButton::clicked, this, [this] {
        actions_.chooseFile(window(), model_.state().file.parent_path(),
                            [&model = model_](const auto& path) { model.list().open(path); });
    });

    notifications_ =
        page.addStep(new WelcomeStep(u"Notifications"_s, u"À l'heure de chaque tâche, avec « Fait » et « Demain »."_s));
    notifications_->setButton(u"Autoriser…"_s, Button::Kind::soft);
    notifications_->button().setObjectName(u"welcome.notifications"_s);
    connect(&notifications_->button(), &QAbstractButton::clicked, this,
            [this] { model_.permission().request(actions_.openNotificationSettings); });

    agenda_ =
        page.addStep(new WelcomeStep(u"Google Agenda (facultatif)"_s,
                                     u"Tacla crée un agenda « Tacla » et y recopie vos tâches datées, sans rappel sur "
                                     u"le téléphone. Tacla n'a accès qu'à cet agenda."_s));
    agenda_->button().setObjectName(u"welcome.agenda"_s);
    connect(&agenda_->button(), &QAbstractButton::clicked, this, &WelcomeView::connectAgenda);
    guide_ = &agenda_->addSecondButton(u"Mode d'emploi"_s);
    guide_->setObjectName(u"welcome.guide"_s);
    connect(guide_, &QAbstractButton::clicked, this, [this] { actions_.openGuide(); });
}

static bool canSignIn(const ModelState& state) {
    using Source = dravel::OAuthClient::Source;
    return state.googleClient != Source::missing && state.googleClient != Source::unreadable;
}

void WelcomeView::connectAgenda() {
    if (model_.state().connection == Connection::signedIn)
        model_.mirror().tell(MirrorEvent::Kind::enableAsked);
    else if (canSignIn(model_.state()))
        model_.mirror().tell(MirrorEvent::Kind::signInAsked);
    else
        actions_.chooseClient(window(), [&model = model_](const auto& path) { model.mirror().useClient(path); });
}

void WelcomeView::refresh() {
    const auto& state = model_.state();
    notifications_->setDone(state.notificationsAllowed);
    refreshAgenda();
}

void WelcomeView::refreshAgenda() {
    const auto& state = model_.state();
    const bool signedIn = state.connection == Connection::signedIn;
    if (const auto text = toQt(trayText(state)); tray_ == nullptr && !text.isEmpty()) {
        tray_ = page_->addStep(new WelcomeStep(u"Sans icône"_s, text));
        tray_->setButton({});
    }
    if (tray_ != nullptr) tray_->setVisible(state.withoutTray);
    const bool signingIn = state.connection == Connection::signingIn;
    agenda_->setDone(signedIn && state.calendarSync);
    agenda_->setButton(signingIn          ? QString()
                       : signedIn         ? u"Activer"_s
                       : canSignIn(state) ? u"Se connecter…"_s
                                          : u"Choisir le fichier client…"_s,
                       Button::Kind::soft);
    guide_->setVisible(!signedIn && !signingIn && !canSignIn(state));
    const bool failed = !signingIn && state.syncError;
    agenda_->setNote(toQt(failed     ? *state.syncError
                          : signedIn ? ""
                                     : accountText(state)),
                     failed ? dravel::Theme::dangerText : dravel::Theme::textSecondary);
}

namespace {

// Every key of the window, as README and manual page tell them.
const std::vector<dravel::KeysPanel::Entry> allKeys{{u"Ctrl+N"_s, u"Nouvelle tâche, depuis toute page"_s},
                                                    {u"Tab"_s, u"Dans un titre : accepter le moment proposé"_s},
                                                    {u"Entrée"_s, u"Ajouter, depuis tous les champs de la carte"_s},
                                                    {u"Ctrl+Entrée"_s, u"Ajouter sans fermer la saisie rapide"_s},
                                                    {u"Ctrl+F"_s, u"Chercher ; Échap revient à la page"_s},
                                                    {u"Ctrl+R"_s, u"Reporter toutes les tâches en retard"_s},
                                                    {u"Ctrl+1 … Ctrl+5"_s, u"Aller à une page"_s},
                                                    {u"← →"_s, u"Dans la barre latérale : sa largeur"_s},
                                                    {u"↑ ↓"_s, u"Passer d'une tâche à l'autre"_s},
                                                    {u"Espace"_s, u"Cocher ou décocher"_s},
                                                    {u"F2 ou Entrée"_s, u"Modifier une tâche ; Échap abandonne"_s},
                                                    {u"Menu ou Maj+F10"_s, u"Le menu d'une tâche"_s},
                                                    {u"R"_s, u"Refaire une tâche faite"_s},
                                                    {u"Ctrl+C"_s, u"Copier la ligne d'une tâche"_s},
                                                    {u"Ctrl+Z"_s, u"Annuler le dernier changement"_s},
                                                    {u"F10 ou Alt"_s, u"Les menus de la fenêtre"_s},
                                                    {u"Ctrl+,"_s, u"Réglages"_s},
                                                    {u"Ctrl+W ou Ctrl+H"_s, u"Fermer la fenêtre"_s},
                                                    {u"Ctrl+M"_s, u"Réduire la fenêtre"_s},
                                                    {u"Ctrl+Q"_s, u"Quitter"_s},
                                                    {u"Ctrl+?"_s, u"Cette liste"_s}};

// The block at the foot of the sidebar that tells how list and calendar stand.
dravel::SidebarBadge* makeSyncBadge(AppModel& model, QWidget* parent) {
    auto* badge = new dravel::SidebarBadge(parent);
    badge->setObjectName(u"syncBadge"_s);
    const auto refresh = [badge, &model] {
        const auto content = syncBadge(model.state(), shortTime);
        badge->setContent({.symbol = content.symbol,
                           .title = toQt(content.title),
                           .subtitle = toQt(content.subtitle),
                           .trouble = content.trouble,
                           .busy = content.syncing});
    };
    new RefreshWhileVisible(*badge, model.changed, refresh);
    refresh();
    return badge;
}

}

MainView::MainView(AppModel& model, DesktopActions actions, dravel::Now now, QWidget* parent)
    : QWidget(parent), model_(model), actions_(std::move(actions)), now_(std::move(now)),
      views_(new QStackedLayout(this)) {
    setObjectName(u"main"_s);
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
    connect(&list, &dravel::SidebarList::clicked, this, [this] {
        if (shell_->page() == find_) showPage();
    });
    auto* find = new dravel::IconButton(dravel::Symbol::search, u"Ouvrir la recherche"_s);
    find->setObjectName(u"find.open"_s);
    find->setToolTip(u"Chercher une tâche (Ctrl+F)"_s);
    find->setFocusPolicy(Qt::NoFocus); // the keyboard has its own way
    connect(find, &QAbstractButton::clicked, this, &MainView::beginFind);
    shell_->setTool(find);
    shell_->setFoot(makeSyncBadge(model_, shell_));
    connect(&shell_->toast(), &dravel::Toast::acted, this, [this] { model_.list().undo(); });
    views_->addWidget(shell_);
    showPage();
    showUndoBar();
    return *shell_;
}

void MainView::select(Section section) {
    section_ = section;
    if (!shell_) return;
    shell_->list().setCurrent(static_cast<int>(section));
    if (shell_->page() == find_) showPage();
}

void MainView::beginTask() {
    if (views_->currentWidget() != shell_) return;
    select(Section::today);
    static_cast<TodayPage*>(shell_->page())->beginTask();
}

void MainView::readyToType() {
    const bool typing = qobject_cast<QLineEdit*>(focusWidget()) != nullptr;
    if (shell_ && section_ == Section::today && shell_->page() != find_ && !typing) beginTask();
}

void MainView::closed() {
    if (auto* today = static_cast<TodayPage*>(pages_[static_cast<std::size_t>(Section::today)])) today->forgetDay();
}

bool MainView::copyTask() {
    for (auto* widget = QApplication::focusWidget(); widget != nullptr; widget = widget->parentWidget())
        if (const auto* row = qobject_cast<TaskRow*>(widget)) {
            QApplication::clipboard()->setText(toQt(TaskFile::line(model_.state().tasks.whole(row->task()))));
            return true;
        }
    return false;
}

// The page behind keeps its scroll position.
void MainView::beginFind() {
    if (views_->currentWidget() != shell_) return;
    if (!find_) {
        find_ = new FindPage(model_, now_, shell_);
        connect(find_, &FindPage::closed, this, &MainView::endFind);
    }
    if (shell_->page() != find_) beforeFind_ = QApplication::focusWidget();
    shell_->showPage(find_);
    find_->begin();
}

void MainView::endFind() {
    showPage();
    if (beforeFind_ && beforeFind_->isVisible())
        beforeFind_->setFocus(Qt::OtherFocusReason);
    else
        shell_->list().setFocus(Qt::OtherFocusReason);
}

void MainView::postponeLate() {
    if (views_->currentWidget() != shell_) return;
    select(Section::late);
    static_cast<ListPage*>(shell_->page())->postponeAll();
}

void MainView::showTask(const std::string& key) {
    if (views_->currentWidget() != shell_) return;
    const auto& state = model_.state();
    const auto place = state.tasks.find(key);
    if (!place) return;
    select(sectionOf(state.tasks.drawn(*place), state.today));
    for (auto* column : shell_->page()->findChildren<TaskColumn*>()) column->focusTask(key);
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

void MainView::addShortcut(const QKeySequence& keys, std::function<void()> run) {
    connect(new QShortcut(keys, this), &QShortcut::activated, this, std::move(run));
}

void MainView::addShortcuts() {
    addShortcut(Qt::CTRL | Qt::Key_N, [this] { beginTask(); });
    addShortcut(Qt::CTRL | Qt::Key_F, [this] { beginFind(); });
    addShortcut(Qt::CTRL | Qt::Key_R, [this] { postponeLate(); });
    addShortcut(QKeySequence(u"Ctrl+?"_s), [this] { (new dravel::KeysPanel(allKeys, this))->open(); });
    for (const auto section : sections) {
        const QKeySequence keys(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + static_cast<int>(section)));
        addShortcut(keys, [this, section] {
            if (views_->currentWidget() == shell_) select(section);
        });
    }
}

}
