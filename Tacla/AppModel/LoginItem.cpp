#include "Tacla/AppModel/LoginItem.h"

#include "Tacla/TaskDocument/TaskDocument.h"

#include <utility>

namespace tacla {

LaunchAtLogin::LaunchAtLogin(LoginItem* item, Preferences& preferences, std::function<void(const std::string&)> report,
                             std::function<void()> changed)
    : item_(item), preferences_(preferences), report_(std::move(report)), changed_(std::move(changed)),
      on_(item != nullptr && item->isEnabled()) {}

void LaunchAtLogin::apply() {
    if (item_ == nullptr || preferences_.wantsLaunchAtLogin() == false) return;
    switch (item_->status()) {
    case LoginItem::Status::enabled: return;
    case LoginItem::Status::switchedOff: // in the desktop's settings: the same choice in another place
        try {
            return preferences_.setWantsLaunchAtLogin(false);
        } catch (const dravel::FileError& error) {
            return report_(sentence(impossibleToWrite(error)));
        }
    case LoginItem::Status::absent:
    case LoginItem::Status::foreign:
        if (item_->mayComeUnasked()) choose(true);
    }
}

void LaunchAtLogin::choose(bool on) {
    if (item_ == nullptr) return;
    try {
        preferences_.setWantsLaunchAtLogin(on);
    } catch (const dravel::FileError& error) {
        report_(sentence(impossibleToWrite(error)));
    }
    try {
        on ? item_->enable() : item_->disable();
    } catch (const dravel::FileError& error) {
        report_("Ouverture au démarrage : " + error.description());
    }
    on_ = item_->isEnabled();
    changed_();
}

}
