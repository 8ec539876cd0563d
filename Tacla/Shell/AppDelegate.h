#pragma once

#include "DravelKit/DravelUI/Theme.h"
#include "DravelKit/Foundation/Signal.h"
#include "DravelKit/Run/MainLoop.h"
#include "DravelKit/StandardMenu/Updater.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/Linux/Bus.h"
#include "Tacla/Linux/SystemEvents.h"
#include "Tacla/Linux/DesktopNotifications.h"
#include "Tacla/Linux/Wake.h"
#include "Tacla/MainWindow/DesktopActions.h"
#include "Tacla/MainWindow/MainWindowController.h"
#include "Tacla/Shell/SingleInstance.h"
#include "Tacla/Shell/Tray.h"

#include <functional>
#include <string>
#include <vector>

namespace tacla {

// Holds the running application together: the model, its tray icon and window, and what the desktop reports.
class AppDelegate {
  public:
    // Everything outlives the delegate.
    struct World {
        dravel::MainLoop& loop;
        Bus &session, &system;
        SingleInstance& instance;
        DesktopNotifications& notifications;
        Preferences& preferences;
        AppModel& model;
        DesktopActions actions;
        dravel::Appearance platformAppearance; // where the desktop prefers neither light nor dark
        std::string activationToken;
        std::function<void()> quit;
    };
    explicit AppDelegate(World);

    void launch();

  private:
    void joinSession(const QDBusConnection&);
    void doWithoutSession();
    void joinSystem(const QDBusConnection&);
    void showWindow(const std::string& activationToken = {});
    void showWindowWithoutTray();
    void installMenu();
    void refreshSoon();
    void followColours();

    void perform(const MenuCommand&);
    void toggle(const std::string& key);
    void respond(const NotificationServer::Response&);
    void activate(const SingleInstance::Activation&);

    World world_;
    dravel::Updater updater_;
    ColourScheme scheme_;
    Tray tray_;
    MainWindowController window_;
    Wake wake_;
    SecretStoreWatch secrets_;
    bool menuInstalled_ = false;
    bool refreshPending_ = false;
    std::vector<dravel::Connection> connections_;
    dravel::Timer trayPatience_;
};

}
