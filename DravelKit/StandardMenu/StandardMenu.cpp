#include "DravelKit/StandardMenu/StandardMenu.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

#include <utility>

namespace dravel::StandardMenu {

namespace {

// In a menu "&" announces an access key; doubled it is itself.
QString plain(QString text) { return text.replace(QLatin1Char('&'), QLatin1String("&&")); }

QAction* add(QMenu& menu, const QString& text, const QKeySequence& keys, std::function<void()> run) {
    auto* action = menu.addAction(plain(text));
    action->setObjectName(text);
    action->setShortcut(keys);
    action->setMenuRole(QAction::NoRole); // or Qt would move entries after their names
    if (run)
        QObject::connect(action, &QAction::triggered, &menu, std::move(run));
    else
        action->setEnabled(false);
    return action;
}

// An edit belongs to the field that has the focus, and every kind of field knows the key.
void addEdit(QMenu& menu, const QString& text, const QKeySequence& keys) {
    add(menu, text, keys, [keys] {
        auto* field = QApplication::focusWidget();
        if (!field) return;
        const auto combination = keys[0];
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, combination.key(), combination.keyboardModifiers());
            QApplication::sendEvent(field, &event);
        }
    });
}

void fillApplicationMenu(QMenu& menu, QMainWindow& window, const About& about, const Actions& actions) {
    const auto& name = about.appName;
    add(menu, QStringLiteral("À propos de ") + name, {},
        [&window, about] { (new AboutPanel(about, &window))->open(); });
    menu.addSeparator();
    if (actions.settings) {
        add(menu, QStringLiteral("Réglages…"), Qt::CTRL | Qt::Key_Comma, actions.settings);
        menu.addSeparator();
    }
    add(menu, QStringLiteral("Masquer ") + name, Qt::CTRL | Qt::Key_H, [&window] { window.close(); });
    // Desktops do not let a program hide or show the windows of others.
    add(menu, QStringLiteral("Masquer les autres"), Qt::CTRL | Qt::ALT | Qt::Key_H, {});
    add(menu, QStringLiteral("Tout afficher"), {}, {});
    menu.addSeparator();
    add(menu, QStringLiteral("Quitter ") + name, Qt::CTRL | Qt::Key_Q, actions.quit);
}

void fillEditMenu(QMenu& menu) {
    addEdit(menu, QStringLiteral("Annuler"), Qt::CTRL | Qt::Key_Z);
    addEdit(menu, QStringLiteral("Rétablir"), Qt::CTRL | Qt::SHIFT | Qt::Key_Z);
    menu.addSeparator();
    addEdit(menu, QStringLiteral("Couper"), Qt::CTRL | Qt::Key_X);
    addEdit(menu, QStringLiteral("Copier"), Qt::CTRL | Qt::Key_C);
    addEdit(menu, QStringLiteral("Coller"), Qt::CTRL | Qt::Key_V);
    addEdit(menu, QStringLiteral("Tout sélectionner"), Qt::CTRL | Qt::Key_A);
}

void fillWindowMenu(QMenu& menu, QMainWindow& window) {
    add(menu, QStringLiteral("Fermer"), Qt::CTRL | Qt::Key_W, [&window] { window.close(); });
    add(menu, QStringLiteral("Réduire"), Qt::CTRL | Qt::Key_M, [&window] { window.showMinimized(); });
}

}

void install(QMainWindow& window, const About& about, const Actions& actions, const std::vector<QMenu*>& extra) {
    auto& bar = *window.menuBar();
    bar.clear();
    fillApplicationMenu(*bar.addMenu(plain(about.appName)), window, about, actions);
    fillEditMenu(*bar.addMenu(QStringLiteral("Édition")));
    fillWindowMenu(*bar.addMenu(QStringLiteral("Fenêtre")), window);
    for (auto* menu : extra) bar.addMenu(menu);
}

}
