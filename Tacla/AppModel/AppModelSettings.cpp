#include "Tacla/AppModel/AppModel.h"
#include "Tacla/AppModel/AppModelInside.h"
#include "Tacla/Reminders/TestNotification.h"

#include <utility>

namespace tacla {

void AppModel::refreshPermissions() {
    auto& in = *inside_;
    if (in.world.notifications == nullptr) return;
    in.world.notifications->ask(in.life.guard([this](NotificationServer::Capabilities server) {
        if (inside_->state.notificationsAllowed == server.reachable) return;
        inside_->state.notificationsAllowed = server.reachable;
        changed();
    }));
}

void AppModel::requestNotifications(std::function<void()> openSettings) {
    auto& in = *inside_;
    if (in.world.notifications == nullptr) return openSettings();
    in.world.notifications->ask(
        in.life.guard([this, openSettings = std::move(openSettings)](NotificationServer::Capabilities server) {
            if (!server.reachable) openSettings();
            refreshPermissions();
        }));
}

void AppModel::testNotification() {
    auto& in = *inside_;
    const auto now = [&loop = in.world.loop] { return loop.now(); };
    sendTestNotification(in.world.notifications, now, in.life.guard([this](std::string line) {
        inside_->state.notificationTest = std::move(line);
        changed();
    }));
}

void AppModel::applyLaunchAtLogin() {
    auto& in = *inside_;
    if (in.world.loginItem == nullptr || in.world.preferences.wantsLaunchAtLogin() == false) return;
    if (!in.world.loginItem->isEnabled()) setLaunchAtLogin(true);
}

void AppModel::setLaunchAtLogin(bool on) {
    auto& in = *inside_;
    if (in.world.loginItem == nullptr) return;
    in.store([&] { in.world.preferences.setWantsLaunchAtLogin(on); });
    try {
        if (on)
            in.world.loginItem->enable();
        else
            in.world.loginItem->disable();
    } catch (const dravel::FileError& error) {
        in.state.syncError = "Ouverture au démarrage : " + error.description();
    }
    in.state.launchAtLogin = in.world.loginItem->isEnabled();
    changed();
}

}
