#include "DravelKit/StandardMenu/StandardMenu.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QRegularExpression>
#include <QShortcut>

#include <memory>
#include <utility>

namespace dravel::StandardMenu {

using namespace Qt::StringLiterals;

namespace {

// In a menu "&" announces an access key; doubled it is itself.
QString plain(QString text) { return text.replace(u'&', "&&"_L1); }

QString withoutAccessKey(QString text) {
    static const QRegularExpression sign(u"&(.)"_s);
    return text.replace(sign, u"\\1"_s);
}

// The text announces its access key.
QAction* add(QMenu& menu, const QString& text, const QKeySequence& keys, std::function<void()> run) {
    auto* action = menu.addAction(text);
    action->setObjectName(withoutAccessKey(text));
    action->setShortcut(keys);
    action->setMenuRole(QAction::NoRole); // or Qt would move entries after their names
    if (run)
        QObject::connect(action, &QAction::triggered, &menu, std::move(run));
    else
        action->setEnabled(false);
    return action;
}

// The text field that this widget is, or that stands in it.
QLineEdit* textField(QWidget* widget) {
    if (qobject_cast<QAbstractSpinBox*>(widget)) return widget->findChild<QLineEdit*>();
    return qobject_cast<QLineEdit*>(widget);
}

// An edit belongs to the text field that has the focus. It is called by name: as a key, a widget that refuses it would
// hand it back to this menu, without end.
template <class Edit> // a member function of QLineEdit
QAction* addEdit(QMenu& menu, const QString& text, const QKeySequence& keys, Edit edit) {
    return add(menu, text, keys, [edit] {
        if (auto* field = textField(QApplication::focusWidget())) (field->*edit)();
    });
}

// "Annuler" and "Rétablir" belong to the text field that has the focus; where that has nothing to take back, there is
// the program's own undo. Only an open menu greys them: their keys work whenever they are pressed.
void addUndo(QMenu& menu, const Actions& actions) {
    auto* undo = add(menu, u"&Annuler"_s, Qt::CTRL | Qt::Key_Z, [actions] {
        auto* field = textField(QApplication::focusWidget());
        if (field && field->isUndoAvailable()) return field->undo();
        if (actions.undo) actions.undo();
    });
    auto* redo = addEdit(menu, u"&Rétablir"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_Z, &QLineEdit::redo);
    // Opened by its key, the menu bar itself has the focus; it gives it back before it acts.
    const auto left = std::make_shared<QPointer<QWidget>>();
    QObject::connect(qApp, &QApplication::focusChanged, &menu, [left](QWidget* from, QWidget* to) {
        if (qobject_cast<QMenuBar*>(to)) *left = from;
    });
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [actions, left, undo, redo] {
        auto* focused = QApplication::focusWidget();
        const auto* field = textField(qobject_cast<QMenuBar*>(focused) ? left->data() : focused);
        undo->setEnabled((field && field->isUndoAvailable()) || (actions.canUndo && actions.canUndo()));
        redo->setEnabled(field && field->isRedoAvailable());
    });
    QObject::connect(&menu, &QMenu::aboutToHide, &menu, [undo, redo] {
        for (auto* action : {undo, redo}) action->setEnabled(true);
    });
}

void fillApplicationMenu(QMenu& menu, QMainWindow& window, const About& about, const Actions& actions) {
    const auto name = plain(about.appName);
    add(menu, u"À &propos de "_s + name, {}, [&window, about] { (new AboutPanel(about, &window))->open(); });
    menu.addSeparator();
    if (actions.settings) {
        add(menu, u"&Réglages…"_s, Qt::CTRL | Qt::Key_Comma, actions.settings);
        menu.addSeparator();
    }
    add(menu, u"&Masquer "_s + name, Qt::CTRL | Qt::Key_H, [&window] { window.close(); });
    // Desktops do not let a program hide or show the windows of others.
    add(menu, u"Masquer les &autres"_s, Qt::CTRL | Qt::ALT | Qt::Key_H, {});
    add(menu, u"Tout a&fficher"_s, {}, {});
    menu.addSeparator();
    add(menu, u"&Quitter "_s + name, Qt::CTRL | Qt::Key_Q, actions.quit);
}

void fillEditMenu(QMenu& menu, const Actions& actions) {
    addUndo(menu, actions);
    menu.addSeparator();
    addEdit(menu, u"&Couper"_s, Qt::CTRL | Qt::Key_X, &QLineEdit::cut);
    add(menu, u"C&opier"_s, Qt::CTRL | Qt::Key_C, [actions] {
        if (auto* field = textField(QApplication::focusWidget())) return field->copy();
        if (actions.copy) actions.copy();
    });
    addEdit(menu, u"Co&ller"_s, Qt::CTRL | Qt::Key_V, &QLineEdit::paste);
    addEdit(menu, u"&Tout sélectionner"_s, Qt::CTRL | Qt::Key_A, &QLineEdit::selectAll);
}

void fillWindowMenu(QMenu& menu, QMainWindow& window) {
    add(menu, u"&Fermer"_s, Qt::CTRL | Qt::Key_W, [&window] { window.close(); });
    add(menu, u"Ré&duire"_s, Qt::CTRL | Qt::Key_M, [&window] { window.showMinimized(); });
}

}

void install(QMainWindow& window, const About& about, const Actions& actions, const std::vector<QMenu*>& extra) {
    auto& bar = *window.menuBar();
    bar.clear();
    fillApplicationMenu(*bar.addMenu(u'&' + plain(about.appName)), window, about, actions);
    fillEditMenu(*bar.addMenu(u"É&dition"_s), actions);
    fillWindowMenu(*bar.addMenu(u"&Fenêtre"_s), window);
    for (auto* menu : extra) bar.addMenu(menu);
    auto* f10 = new QShortcut(Qt::Key_F10, &window);
    QObject::connect(f10, &QShortcut::activated, &bar, [&bar] { bar.setActiveAction(bar.actions().first()); });
}

}
