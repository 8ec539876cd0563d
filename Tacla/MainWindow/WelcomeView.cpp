#include "Tacla/MainWindow/WelcomeView.h"

#include "DravelKit/DravelLogo/TickIcon.h"
#include "DravelKit/DravelUI/WelcomePage.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/RefreshWhileVisible.h"

#include <QVBoxLayout>

namespace tacla {

using namespace Qt::StringLiterals;
using dravel::Button;
using dravel::WelcomeStep;

WelcomeView::WelcomeView(AppModel& model, const DesktopActions& actions, QWidget* parent)
    : QWidget(parent), model_(model), actions_(actions) {
    auto* page = new dravel::WelcomePage(dravel::tickIcon(), u"Tacla"_s,
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
                            [&model = model_](const auto& path) { model.use(path); });
    });

    notifications_ =
        page.addStep(new WelcomeStep(u"Notifications"_s, u"À l'heure de chaque tâche, avec « Fait » et « Demain »."_s));
    notifications_->setButton(u"Autoriser…"_s, Button::Kind::Soft);
    notifications_->button().setObjectName(u"welcome.notifications"_s);
    connect(&notifications_->button(), &QAbstractButton::clicked, this,
            [this] { model_.requestNotifications(actions_.openNotificationSettings); });

    agenda_ =
        page.addStep(new WelcomeStep(u"Google Agenda (facultatif)"_s,
                                     u"Tacla crée un agenda « Tacla » et y recopie vos tâches datées, sans rappel sur "
                                     u"le téléphone. Tacla n'a accès qu'à cet agenda."_s));
    agenda_->button().setObjectName(u"welcome.agenda"_s);
    connect(&agenda_->button(), &QAbstractButton::clicked, this, &WelcomeView::connectAgenda);
}

void WelcomeView::connectAgenda() {
    if (model_.state().connection == Connection::signedIn)
        model_.enableCalendarSync();
    else
        model_.signIn();
}

void WelcomeView::refresh() {
    const auto& state = model_.state();
    notifications_->setDone(state.notificationsAllowed);
    const bool signedIn = state.connection == Connection::signedIn;
    agenda_->setDone(signedIn && state.calendarSync);
    if (state.connection == Connection::signingIn)
        agenda_->setButton({});
    else
        agenda_->setButton(signedIn ? u"Activer"_s : u"Se connecter…"_s, Button::Kind::Soft);
}

}
