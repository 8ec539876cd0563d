#include "Tacla/Shell/Tray.h"

#include "Tacla/StatusMenu/StatusMenu.h"

#include <utility>

namespace tacla {

Tray::Tray(const AppModel& model, ColourScheme& scheme, bool updatesAvailable, Choices choices)
    : model_(model), scheme_(scheme), choices_(std::move(choices)),
      menu_([this, updatesAvailable] { return statusMenu(model_.state(), updatesAvailable); }, choices_.chosen),
      schemeChanged_(scheme.changed.connect([this] { refresh(); })) {}

void Tray::openOn(const QDBusConnection& connection) {
    menu_.registerOn(connection); // before the item, whose host asks for it
    item_.emplace(connection);
    activated_ = item_->activated.connect(choices_.activated);
    refresh();
}

void Tray::refresh() {
    if (!item_) return;
    const auto open = model_.state().openCount();
    item_->show({open, statusTitle(open), statusToolTip(open), trayColour(scheme_.preference())});
    menu_.refresh();
}

void Tray::askIfShown(const std::function<void(bool)>& answer) { item_ ? item_->askIfShown(answer) : answer(false); }

}
