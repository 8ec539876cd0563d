#include "DravelKit/DravelLogo/DravelLogo.h"
#include "DravelKit/DravelLogo/TickIcon.h"
#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Chip.h"
#include "DravelKit/DravelUI/DateField.h"
#include "DravelKit/DravelUI/DatePopup.h"
#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/DravelUI/DravelShell.h"
#include "DravelKit/DravelUI/FlowLayout.h"
#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/DravelUI/ProgressRing.h"
#include "DravelKit/DravelUI/SettingsCard.h"
#include "DravelKit/DravelUI/SidebarBadge.h"
#include "DravelKit/DravelUI/SidebarList.h"
#include "DravelKit/DravelUI/SidebarRow.h"
#include "DravelKit/DravelUI/StatusTag.h"
#include "DravelKit/DravelUI/Switch.h"
#include "DravelKit/DravelUI/TextField.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "DravelKit/DravelUI/WelcomePage.h"

#include <QApplication>
#include <QDir>
#include <QFocusEvent>
#include <QImage>
#include <QMenu>
#include <QVBoxLayout>

#include <functional>
#include <memory>

// Renders every control in every state to pictures, light and dark, at three scales.
using namespace dravel;
using namespace Qt::StringLiterals;

namespace {

enum class State { Rest, Hover, Pressed, Focus, Disabled };
constexpr std::array states{State::Rest, State::Hover, State::Pressed, State::Focus, State::Disabled};

void put(QWidget& widget, State state) {
    widget.setAttribute(Qt::WA_UnderMouse, state == State::Hover);
    if (auto* button = qobject_cast<QAbstractButton*>(&widget)) button->setDown(state == State::Pressed);
    widget.setEnabled(state != State::Disabled);
    if (state == State::Focus) {
        QFocusEvent focus(QEvent::FocusIn, Qt::TabFocusReason);
        QCoreApplication::sendEvent(&widget, &focus);
    }
}

template <class Widget>
Widget* place(Widget* widget, int x, int y) {
    widget->setGeometry({QPoint(x, y), widget->sizeHint()});
    return widget;
}

void label(QWidget& stage, const char16_t* text, int x, int y) {
    place(new TextLabel(Theme::Typography::captionStrong, Theme::textTertiary, QString::fromUtf16(text), &stage), x, y);
}

void buttons(QWidget& stage) {
    int y = 90;
    for (const auto& [kind, title] : {std::pair{Button::Kind::Neutral, u"Ouvrir"_s},
                                      {Button::Kind::Soft, u"Ouvrir"_s},
                                      {Button::Kind::Prominent, u"Ajouter"_s}}) {
        int x = 48;
        for (const State state : states) {
            auto* button = place(new Button(kind, title, &stage), x, y);
            put(*button, state);
            x += button->width() + 16;
        }
        y += 90;
    }
    int x = 48;
    for (const State state : {State::Rest, State::Hover, State::Rest, State::Pressed, State::Focus}) {
        auto* chip = place(new Chip(u"Demain"_s, &stage), x, y);
        chip->setSelected(x > 200);
        put(*chip, state);
        x += chip->width() + 16;
    }
}

void switches(QWidget& stage) {
    int at = 0;
    constexpr std::array lefts{60, 134, 208, 282, 356, 430, 504};
    for (const auto& [on, state] : {std::pair{false, State::Rest},
                                    {false, State::Hover},
                                    {true, State::Rest},
                                    {true, State::Hover},
                                    {true, State::Rest},
                                    {true, State::Focus},
                                    {true, State::Disabled}}) {
        auto* one = new Switch({}, at == 4 ? Switch::Kind::Danger : Switch::Kind::Plain, &stage);
        one->setChecked(on);
        place(one, lefts.at(static_cast<std::size_t>(at)), 446);
        put(*one, state);
        ++at;
    }
}

void ringsAndTags(QWidget& stage) {
    int x = 48;
    for (const auto& [done, total] : {std::pair{0, 0}, {0, 6}, {2, 6}, {6, 6}}) {
        place(new ProgressRing(&stage), x, 512)->setProgress(done, total, {});
        x += 102;
    }
    x = 48;
    for (const auto& [symbol, text, look] : {std::tuple{Symbol::Calendar4, u"demain"_s, TagLook::plain()},
                                             {Symbol::Clock, u"09:30"_s, TagLook::plain()},
                                             {Symbol::ExclamationLg, u"Prioritaire"_s, TagLook::danger()},
                                             {Symbol::HourglassSplit, u"due le 12/11"_s, TagLook::warning()},
                                             {Symbol::CheckLg, u"faite le 24/11"_s, TagLook::success()}})
        x += place(new StatusTag(symbol, text, look, &stage), x, 633)->width() + 12;
    place(new CountCapsule(12, &stage), x + 6, 632);
}

void addCard(QWidget& stage) {
    auto* card = new Card(&stage);
    card->setGeometry(48, 694, 684, 132);
    card->setHighlighted(true);
    auto* disc = new Disc({.diameter = 20, .symbol = Symbol::PlusLg, .symbolSize = 12}, card);
    disc->move(16, 18);
    auto* field = new TextField(TextField::Kind::Frameless, u"Nouvelle tâche…"_s, card);
    field->setGeometry(48, 8, 620, 40);
    field->setText(u"Appeler la Maison Perrin"_s);
    auto* tools = new QWidget(card);
    auto* flow = new FlowLayout(12, 8, tools);
    for (const auto& day : {u"Aujourd'hui"_s, u"Demain"_s, u"Lundi"_s}) {
        auto* chip = new Chip(day);
        chip->setSelected(day == u"Demain"_s);
        flow->addWidget(chip);
        flow->setGapBefore(chip, 8);
    }
    auto* date = new DateField(u"Jour"_s);
    date->setDate({2026, 11, 25});
    auto* hour = new Switch(u"Heure"_s);
    auto* time = new TimeField(u"Heure"_s);
    time->setTime({10, 0});
    auto* priority = new Switch(u"Prioritaire"_s, Switch::Kind::Danger);
    auto* add = new Button(Button::Kind::Prominent, u"Ajouter"_s);
    for (QWidget* one : std::initializer_list<QWidget*>{date, hour, time, priority, add}) flow->addWidget(one);
    flow->setGapBefore(time, 8);
    flow->setTrailing(add);
    hour->setChecked(true);
    priority->setChecked(true);
    tools->setGeometry(48, 52, 620, flow->heightForWidth(620));
}

void foot(QWidget& stage) {
    int y = 992;
    for (const auto& [symbol, title, state] : {std::tuple{Symbol::Sun, u"Aujourd'hui"_s, State::Rest},
                                               {Symbol::Calendar3, u"À venir"_s, State::Hover},
                                               {Symbol::CheckCircle, u"Faites"_s, State::Rest},
                                               {Symbol::Gear, u"Réglages"_s, State::Pressed},
                                               {Symbol::ExclamationCircle, u"En retard"_s, State::Focus}}) {
        auto* row = new SidebarRow(symbol, title, &stage);
        row->setGeometry(48, y, 185, 36);
        row->setChecked(title == u"Faites"_s || state == State::Focus);
        put(*row, state);
        y += 40;
    }
    y = 978;
    for (const SidebarBadge::Content& content :
         {SidebarBadge::Content{Symbol::CheckLg, u"7 à faire"_s, u"Agenda à jour · 10:40"_s},
          {Symbol::ArrowRepeat, u"7 à faire"_s, u"Synchro de l'agenda…"_s, false, true},
          {Symbol::CheckLg, u"Tout est coché"_s, u"taches.md"_s},
          {Symbol::ExclamationLg, u"7 à faire"_s, u"Agenda non connecté"_s, true}}) {
        auto* badge = new SidebarBadge(&stage);
        badge->setContent(content);
        badge->setGeometry(275, y, 185, 56);
        y += 64;
    }
    auto* popup = new DatePopup({2026, 11, 26}, {2026, 11, 24}, &stage);
    popup->setWindowFlags(Qt::Widget);
    popup->move(484, 978);
    put(*popup->findChild<QWidget*>(u"2026-11-19"_s), State::Hover);
}

std::unique_ptr<QWidget> controls() {
    auto stage = std::make_unique<CardStage>();
    stage->resize(780, 1300);
    auto* back = new Card(stage.get());
    back->setGeometry(24, 24, 732, 1238);
    for (const auto& [text, y] : {std::pair{u"Neutral button", 48},
                                  {u"Soft button (asks for a permission, signs in)", 138},
                                  {u"Prominent button", 228},
                                  {u"Chip", 318},
                                  {u"Switch", 408},
                                  {u"Ring (none today, none done, some, all)", 490},
                                  {u"Tags, count capsule", 610},
                                  {u"Add card, focused, with time and priority", 672}})
        label(*stage, text, 48, y);
    buttons(*stage);
    switches(*stage);
    ringsAndTags(*stage);
    addCard(*stage);
    foot(*stage);
    place(new DravelLogo(32, stage.get()), 580, 50);
    return stage;
}

SettingRow* row(Symbol symbol, const QString& title, const QString& detail, std::initializer_list<QString> actions) {
    auto* made = new SettingRow(symbol, title, detail);
    for (const auto& action : actions) made->addControl(new Button(Button::Kind::Neutral, action));
    return made;
}

std::unique_ptr<QWidget> settings() {
    auto shell = std::make_unique<DravelShell>(u"Tacla"_s, tickIcon(), u"Sections"_s);
    auto& list = shell->list();
    list.addRow(Symbol::Sun, u"Aujourd'hui"_s, u"today"_s);
    list.addRow(Symbol::ExclamationCircle, u"En retard"_s, u"late"_s);
    list.addRow(Symbol::Calendar3, u"À venir"_s, u"upcoming"_s);
    list.addRow(Symbol::CheckCircle, u"Faites"_s, u"done"_s);
    list.addRow(Symbol::Gear, u"Réglages"_s, u"settings"_s);
    list.setCurrent(4);
    auto* badge = new SidebarBadge;
    badge->setContent({Symbol::CheckLg, u"7 à faire"_s, u"Agenda à jour · 10:40"_s});
    shell->setFoot(badge);
    auto* page = new DravelPage(u"Réglages"_s, {});
    auto* file = new SettingsCard(Symbol::FileEarmarkText, u"Liste"_s);
    file->addRow(row(Symbol::FileEarmark, u"Votre liste de tâches"_s, u"/home/camille/Documents/taches.md"_s,
                     {u"Ouvrir"_s, u"Afficher"_s}));
    file->addRow(row(Symbol::ArrowLeftRight, u"Changer de fichier"_s,
                     u"Un fichier Markdown existant, ou une nouvelle liste."_s, {u"Choisir…"_s, u"Créer…"_s}));
    page->add(file);
    auto* bell = new SettingsCard(Symbol::BellFill, u"Notifications"_s);
    bell->addRow(row(Symbol::Bell, u"À l'heure de chaque tâche"_s,
                     u"Avec « Fait » pour la cocher et « Demain » pour la reporter. 9 h pour une tâche sans heure."_s,
                     {}))
        ->setDone(true);
    bell->addRow(row(Symbol::Send, u"Tester"_s, u"Envoie une notification d'essai tout de suite."_s, {u"Envoyer"_s}));
    page->add(bell);
    auto* agenda = new SettingsCard(Symbol::Calendar3, u"Google Agenda"_s,
                                    u"Facultatif : pour voir vos tâches datées dans Google Agenda."_s);
    agenda->addRow(row(Symbol::PersonCircle, u"Compte Google"_s, u"Connecté à votre compte Google."_s, {}))
        ->setDone(true);
    auto* copy = agenda->addRow(row(Symbol::CalendarPlus, u"Recopier les tâches dans l'agenda"_s,
                                    u"Dans un agenda à part, sans rappel sur le téléphone."_s, {}));
    auto* on = new Switch;
    on->setChecked(true);
    copy->addControl(on);
    agenda->addRow(row(Symbol::ArrowRepeat, u"Synchronisation"_s,
                       u"Dernière : 10:40, puis à chaque modification de la liste"_s, {u"Synchroniser"_s}));
    agenda->addRow(row(Symbol::Compass, u"Google Agenda"_s, {}, {u"Ouvrir"_s}));
    page->add(agenda);
    auto* last = new SettingsCard;
    auto* login = last->addRow(row(Symbol::Power, u"Ouvrir Tacla à l'ouverture de session"_s, {}, {}));
    auto* always = new Switch;
    always->setChecked(true);
    login->addControl(always);
    last->addRow(row(Symbol::Terminal, u"En ligne de commande"_s,
                     u"/home/camille/.local/bin/tacla\ntacla list · tacla done <texte> · tacla sync"_s, {}))
        ->setTextsSelectable(true);
    page->add(last);
    shell->showPage(page);
    shell->resize(980, 942);
    return shell;
}

std::unique_ptr<QWidget> empty() {
    auto page = std::make_unique<DravelPage>(
        u"En retard"_s, u"Cochez-les, ou reportez-les avec « … » : demain, lundi ou dans une semaine."_s);
    page->add(new EmptyCard(Symbol::HandThumbsUpFill, u"Aucun retard. 👌"_s));
    page->resize(770, 720);
    return page;
}

std::unique_ptr<QWidget> welcome() {
    auto page = std::make_unique<WelcomePage>(
        tickIcon(), u"Tacla"_s,
        u"Vos tâches dans un simple fichier texte, cochées depuis la barre des menus, rappelées à l'heure dite et, si "
        u"vous le souhaitez, recopiées dans votre Google Agenda."_s,
        u"C'est parti"_s);
    page->addStep(
            new WelcomeStep(u"Votre liste de tâches"_s,
                            u"Un fichier Markdown sur votre Mac, que vous pouvez aussi modifier dans votre éditeur."_s))
        ->setButton(u"Changer…"_s);
    page->addStep(new WelcomeStep(u"Notifications"_s, u"À l'heure de chaque tâche, avec « Fait » et « Demain »."_s))
        ->setDone(true);
    page->addStep(new WelcomeStep(u"Google Agenda (facultatif)"_s,
                                  u"Tacla crée un agenda « Tacla » et y recopie vos tâches datées, sans rappel sur le "
                                  u"téléphone. Tacla n'a accès qu'à cet agenda."_s))
        ->setButton(u"Se connecter…"_s, Button::Kind::Soft);
    page->resize(980, 720);
    return page;
}

std::unique_ptr<QWidget> menu() {
    auto made = std::make_unique<QMenu>();
    made->addAction(u"Reporter à demain"_s);
    made->setActiveAction(made->addAction(u"Reporter à lundi"_s));
    made->addAction(u"Reporter d'une semaine"_s);
    made->addSeparator();
    made->addAction(u"Cocher"_s);
    made->addAction(u"Modifier"_s)->setEnabled(false);
    markDestructive(*made->addAction(u"Supprimer"_s));
    made->ensurePolished();
    made->resize(made->sizeHint());
    return made;
}

void save(QWidget& widget, const QString& path, qreal scale) {
    widget.setAttribute(Qt::WA_DontShowOnScreen);
    widget.show();
    for (int round = 0; round < 3; ++round) QCoreApplication::sendPostedEvents();
    QImage image((QSizeF(widget.size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    widget.render(&image);
    image.save(path);
}

}

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    installLook(application, Appearance::Light);
    const QDir folder(application.arguments().value(1, u"gallery"_s));
    folder.mkpath(u"."_s);
    const std::array makers{std::pair{u"controls"_s, &controls}, std::pair{u"settings"_s, &settings},
                            std::pair{u"empty"_s, &empty}, std::pair{u"welcome"_s, &welcome},
                            std::pair{u"menu"_s, &menu}};
    for (const auto& [name, make] : makers)
        for (const auto appearance : {Appearance::Light, Appearance::Dark})
            for (const qreal scale : {1.0, 1.25, 2.0}) {
                setAppearance(appearance);
                const auto widget = make();
                const auto* look = appearance == Appearance::Dark ? u"dark" : u"light";
                save(*widget, folder.filePath(u"%1-%2-%3x.png"_s.arg(name, QString::fromUtf16(look)).arg(scale)),
                     scale);
            }
    return 0;
}
