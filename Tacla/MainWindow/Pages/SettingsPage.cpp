#include "Tacla/MainWindow/Pages/SettingsPage.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/SettingsCard.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/PageContents.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/MainWindow/RefreshWhileVisible.h"

#include <QClipboard>
#include <QDropEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QMenu>
#include <QMimeData>

namespace tacla {

namespace Theme = dravel::Theme;
using namespace Qt::StringLiterals;
using dravel::Button;
using dravel::SettingRow;
using dravel::SettingsCard;
using dravel::Switch;
using dravel::Symbol;

namespace {

constexpr std::size_t mostCopiesOffered = 30;

// A button at the right of a row. Several buttons of a page say "Ouvrir": the accessible name tells them apart.
template <class Action>
void addButton(Button* button, SettingRow& row, const char* objectName, const QString& name, Action action) {
    button->setObjectName(QLatin1StringView(objectName));
    button->setAccessibleName(name);
    row.addControl(button);
    QObject::connect(button, &QAbstractButton::clicked, &row, action);
}

Button* neutral(const QString& text) { return new Button(Button::Kind::neutral, text); }

// Screen readers toggle a switch without a click.
template <class Action>
Switch* addSwitch(SettingRow& row, const char* objectName, const QString& name, Action action) {
    auto* control = new Switch;
    control->setObjectName(QLatin1StringView(objectName));
    control->setAccessibleName(name);
    row.addControl(control);
    QObject::connect(control, &QAbstractButton::toggled, &row, action);
    return control;
}

SettingRow* addRow(SettingsCard& card, Symbol symbol, const QString& name, const QString& title,
                   const QString& detail = {}) {
    auto* row = card.addRow(new SettingRow(symbol, title, detail));
    row->setObjectName(name);
    row->setAccessibleName(title);
    return row;
}

}

SettingsPage::SettingsPage(AppModel& model, const DesktopActions& actions, QWidget* parent)
    : DravelPage(toQt(title(Section::settings)), {}, parent), model_(model), actions_(actions) {
    setObjectName(toQt("page." + std::string(rawValue(Section::settings))));
    addListCard();
    addNotificationsCard();
    addCalendarCard();
    addSystemCard();
    addFooter();
    new RefreshWhileVisible(*this, model.changed, [this] { refresh(); });
    refresh();
}

void SettingsPage::addListCard() {
    auto* card = new SettingsCard(Symbol::fileEarmarkText, u"Liste"_s, {}, &stage());
    file_ = addRow(*card, Symbol::fileEarmark, u"file"_s, u"Votre liste de tâches"_s);
    addButton(neutral(u"Ouvrir"_s), *file_, "file.open", u"Ouvrir la liste de tâches"_s,
              [this] { actions_.openFile(model_.state().file); });
    addButton(neutral(u"Afficher"_s), *file_, "file.reveal", u"Afficher la liste de tâches dans son dossier"_s,
              [this] { actions_.reveal(model_.state().file); });

    auto* change = addRow(*card, Symbol::arrowLeftRight, u"change"_s, u"Changer de fichier"_s,
                          u"Un fichier Markdown existant, ou une nouvelle liste."_s);
    addButton(neutral(u"Choisir…"_s), *change, "change.choose", u"Choisir un autre fichier"_s, [this] {
        actions_.chooseFile(window(), model_.state().file.parent_path(),
                            [&model = model_](const auto& path) { model.list().open(path); });
    });
    addButton(neutral(u"Créer…"_s), *change, "change.create", u"Créer une nouvelle liste"_s, [this] {
        actions_.createFile(window(), model_.state().file.parent_path(),
                            [&model = model_](const auto& path) { model.list().open(path, true); });
    });

    auto* copies = addRow(*card, Symbol::files, u"copies"_s, u"Copies de la liste"_s,
                          u"Une copie est gardée avant chaque changement : toutes celles du jour, puis une par heure "
                          u"pendant 7 jours, puis une par jour pendant 30 jours, 200 Mo en tout."_s);
    auto* bringBack = neutral(u"Rétablir…"_s);
    addButton(bringBack, *copies, "copies.bringBack", u"Rétablir une copie de la liste"_s,
              [this, bringBack] { offerCopies(*bringBack); });
    addButton(neutral(u"Afficher les copies"_s), *copies, "copies.show", u"Afficher les copies"_s,
              [this] { actions_.showCopies(); });
    card->setAcceptDrops(true);
    card->installEventFilter(this);
    add(card);
}

namespace {

// The list that is being dropped, if it may be one.
std::optional<std::filesystem::path> droppedList(const QMimeData& data) {
    if (data.urls().size() != 1 || !data.urls().front().isLocalFile()) return {};
    std::filesystem::path path = fromQt(data.urls().front().toLocalFile());
    const auto ending = path.extension();
    if (ending != ".md" && ending != ".markdown" && ending != ".txt") return {};
    return path;
}

}

// A file that is dropped on the list's card becomes the list.
bool SettingsPage::eventFilter(QObject* watched, QEvent* event) {
    auto* card = qobject_cast<dravel::Card*>(watched);
    const bool drop = event->type() == QEvent::Drop;
    if (card && (drop || event->type() == QEvent::DragLeave)) card->setHighlighted(false);
    if (!drop && event->type() != QEvent::DragEnter) return DravelPage::eventFilter(watched, event);
    auto* dropped = static_cast<QDropEvent*>(event);
    const auto path = droppedList(*dropped->mimeData());
    if (!path) return false;
    dropped->acceptProposedAction();
    if (card && !drop) card->setHighlighted(true);
    if (drop) model_.list().open(*path);
    return true;
}

void SettingsPage::offerCopies(QWidget& button) {
    auto* menu = new QMenu(this);
    menu->setObjectName(u"copies"_s);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    auto copies = model_.list().copies();
    if (copies.empty()) menu->addAction(u"Aucune copie de cette liste"_s)->setEnabled(false);
    if (copies.size() > mostCopiesOffered) copies.resize(mostCopiesOffered); // the others stand in the folder
    for (const auto& copy : copies) {
        auto* one = menu->addMenu(toQt(copyText(copy.made, model_.state().today)));
        one->addAction(u"Regarder"_s, this, [this, path = copy.path] { actions_.openFile(path); });
        one->addAction(u"Rétablir"_s, this, [this, path = copy.path] { model_.list().bringBack(path); });
    }
    dravel::popUp(*menu, button.mapToGlobal(button.rect().bottomLeft()));
}

void SettingsPage::addNotificationsCard() {
    auto* card = new SettingsCard(Symbol::bellFill, u"Notifications"_s, {}, &stage());
    reminders_ =
        addRow(*card, Symbol::bell, u"reminders"_s, u"À l'heure de chaque tâche"_s,
               u"Avec « Fait » pour la cocher et « Demain » pour la reporter. 9 h pour une tâche sans heure."_s);
    allow_ = new Button(Button::Kind::soft, u"Autoriser…"_s);
    addButton(allow_, *reminders_, "reminders.allow", u"Autoriser les notifications"_s,
              [this] { model_.permission().request(actions_.openNotificationSettings); });
    test_ = addRow(*card, Symbol::send, u"test"_s, u"Tester"_s, u"Envoie une notification d'essai tout de suite."_s);
    addButton(neutral(u"Envoyer"_s), *test_, "test.send", u"Envoyer une notification d'essai"_s,
              [this] { model_.permission().test(); });
    add(card);
}

void SettingsPage::addCalendarCard() {
    auto* card = new SettingsCard(Symbol::calendar3, u"Google Agenda"_s,
                                  u"Facultatif : pour voir vos tâches datées dans Google Agenda."_s, &stage());
    addAccountRows(*card);
    const auto mirror = u"Recopier les tâches dans l'agenda"_s;
    mirror_ = addRow(*card, Symbol::calendarPlus, u"mirror"_s, mirror);
    mirrorOn_ = addSwitch(*mirror_, "mirror.switch", mirror, [this](bool on) {
        if (on != model_.state().calendarSync) model_.mirror().tell({.kind = MirrorEvent::Kind::switchAsked, .on = on});
    });
    sync_ = addRow(*card, Symbol::arrowRepeat, u"sync"_s, u"Synchronisation"_s);
    addButton(neutral(u"Synchroniser"_s), *sync_, "sync.now", u"Synchroniser maintenant"_s,
              [this] { model_.mirror().tell(MirrorEvent::Kind::syncDue); });
    auto* web = addRow(*card, Symbol::compass, u"web"_s, u"Google Agenda"_s);
    addButton(neutral(u"Ouvrir"_s), *web, "web.open", u"Ouvrir Google Agenda"_s, [this] { actions_.openAgenda(); });
    add(card);
}

void SettingsPage::addAccountRows(SettingsCard& card) {
    account_ = addRow(card, Symbol::personCircle, u"account"_s, u"Compte Google"_s);
    guide_ = neutral(u"Mode d'emploi"_s);
    addButton(guide_, *account_, "account.guide", u"Mode d'emploi de Google Agenda"_s,
              [this] { actions_.openGuide(); });
    copyAddress_ = neutral(u"Copier l'adresse"_s);
    addButton(copyAddress_, *account_, "account.copyAddress", u"Copier l'adresse de connexion"_s, [this] {
        if (const auto& wait = model_.state().signIn) QGuiApplication::clipboard()->setText(toQt(wait->address));
    });
    leave_ = neutral(u"Annuler"_s);
    addButton(leave_, *account_, "account.leave", u"Annuler la connexion à Google"_s,
              [this] { model_.mirror().tell(MirrorEvent::Kind::signInLeft); });
    signIn_ = new Button(Button::Kind::soft, u"Se connecter…"_s);
    addButton(signIn_, *account_, "account.signIn", u"Se connecter à Google"_s,
              [this] { model_.mirror().tell(MirrorEvent::Kind::signInAsked); });
    signOut_ = neutral(u"Se déconnecter"_s);
    addButton(signOut_, *account_, "account.signOut", u"Se déconnecter de Google"_s,
              [this] { model_.mirror().tell(MirrorEvent::Kind::signOutAsked); });

    client_ = addRow(card, Symbol::fileEarmark, u"client"_s, u"Fichier client"_s);
    addButton(
        neutral(u"Choisir le fichier client…"_s), *client_, "client.choose", u"Choisir le fichier client"_s, [this] {
            actions_.chooseClient(window(), [&model = model_](const auto& path) { model.mirror().useClient(path); });
        });
}

void SettingsPage::addSystemCard() {
    auto* card = new SettingsCard(&stage());
    const auto title = u"Ouvrir Tacla à l'ouverture de session"_s;
    login_ = addRow(*card, Symbol::power, u"login"_s, title);
    loginOn_ = addSwitch(*login_, "login.switch", title, [this](bool on) {
        if (on == model_.state().launchAtLogin) return;
        model_.login().choose(on);
        refresh(); // the desktop may have refused
    });
    quick_ = addRow(*card, Symbol::keyboard, u"quick"_s, u"Saisie rapide"_s);
    chooseKey_ = neutral({});
    addButton(chooseKey_, *quick_, "quick.choose", u"Choisir la touche de la saisie rapide"_s,
              [this] { actions_.chooseQuickEntryKey(window()); });
    copyCommand_ = neutral(u"Copier"_s);
    addButton(copyCommand_, *quick_, "quick.copy", u"Copier la commande de la saisie rapide"_s,
              [] { QGuiApplication::clipboard()->setText(toQt(quickEntryCommand)); });
    quick_->setTextsSelectable(true);
    auto* terminal =
        addRow(*card, Symbol::terminal, u"terminal"_s, u"En ligne de commande"_s,
               pathText(actions_.home / ".local/bin/tacla") + u"\ntacla list · tacla done <texte> · tacla sync"_s);
    login_->setTextsSelectable(true);
    terminal->setTextsSelectable(true);
    add(card);
}

void SettingsPage::addFooter() {
    auto* footer = new QWidget(&stage());
    footer->setObjectName(u"footer"_s);
    auto* line = new QHBoxLayout(footer);
    line->setContentsMargins(Theme::Space::md, 0, Theme::Space::md, 0);
    auto* version = new dravel::TextLabel(Theme::Typography::callout, Theme::textTertiary,
                                          u"Tacla "_s + toQt(actions_.version), footer);
    version->setObjectName(u"version"_s);
    version->setFixedHeight(28);
    line->addWidget(version, 1);
    if (actions_.checkForUpdates) {
        auto* button = new Button(Button::Kind::neutralOnBackground, u"Rechercher des mises à jour…"_s, footer);
        button->setObjectName(u"updates"_s);
        connect(button, &QAbstractButton::clicked, this, [this] { actions_.checkForUpdates(); });
        line->addWidget(button);
    }
    add(footer);
}

void SettingsPage::refresh() {
    const auto& state = model_.state();
    file_->setDetail(pathText(state.file));
    reminders_->setDone(state.notificationsAllowed, u"Notifications autorisées"_s);
    allow_->setVisible(!state.notificationsAllowed);
    test_->setNote(state.notificationTest ? toQt(*state.notificationTest) : QString());
    loginOn_->setChecked(state.launchAtLogin);
    login_->setDetail(toQt(trayText(state)));
    quick_->setDetail(toQt(quickEntryText(state)));
    chooseKey_->setVisible(state.quickEntryKey.has_value());
    const bool noKey = state.quickEntryKey.value_or("").empty();
    chooseKey_->setText(noKey ? u"Choisir…"_s : u"Changer…"_s);
    copyCommand_->setVisible(noKey);
    refreshAccount();
    refreshCalendar();
}

void SettingsPage::refreshAccount() {
    using Source = dravel::OAuthClient::Source;
    const auto& state = model_.state();
    const bool signedIn = state.connection == Connection::signedIn;
    const bool signingIn = state.connection == Connection::signingIn;
    const bool noBrowser = state.signIn && state.signIn->noBrowser;
    account_->setDetail(toQt(accountText(state)), noBrowser ? Theme::dangerText : Theme::textSecondary);
    account_->setDone(signedIn, u"Connecté"_s);
    account_->setStatus(signingIn ? u"Connexion"_s : QString());
    guide_->setVisible(!noBrowser); // a narrow window has no room for it then
    copyAddress_->setVisible(noBrowser);
    leave_->setVisible(signingIn);
    signIn_->setVisible(!signedIn && !signingIn && state.googleClient != Source::missing);
    signOut_->setVisible(signedIn);
    client_->setVisible(!signedIn && !signingIn && state.googleClient != Source::package);
    client_->setDetail(toQt(clientText(state.googleClient)),
                       state.googleClient == Source::unreadable ? Theme::dangerText : Theme::textSecondary);
}

void SettingsPage::refreshCalendar() {
    const auto& state = model_.state();
    mirrorOn_->setChecked(state.calendarSync);
    mirror_->setDetail(toQt(calendarSyncText(state.calendarSync)));
    sync_->setDetail(toQt(syncText(state, shortTime)), state.syncError ? Theme::dangerText : Theme::textSecondary);
    sync_->setNote(toQt(state.syncHint.value_or("")));
}

}
