#pragma once

#include "DravelKit/DravelUI/Theme.h"
#include "DravelKit/Foundation/Signal.h"
#include "DravelKit/Run/MainLoop.h"
#include "DravelKit/StandardMenu/StandardMenu.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/Linux/Bus.h"
#include "Tacla/Linux/DesktopNotifications.h"
#include "Tacla/Linux/DesktopSearch.h"
#include "Tacla/Linux/MenuServer.h"
#include "Tacla/Linux/Portal.h"
#include "Tacla/Linux/StatusItem.h"
#include "Tacla/Linux/SystemEvents.h"
#include "Tacla/MainWindow/DesktopActions.h"
#include "Tacla/MainWindow/MainWindowController.h"
#include "Tacla/Shell/SingleInstance.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tacla {

// What the running application does: when it starts, when its menu, a notification or a launcher is used, and when the
// desktop reports something.
class AppDelegate {
  public:
    // Everything outlives the delegate.
    struct Ports {
        dravel::MainLoop& loop;
        Bus &session, &system;
        SingleInstance& instance;
        DesktopNotifications& notifications;
        GnomeNotifications* gnomeNotifications; // on GNOME only
        DesktopSearch& search;
        TrayHost trayHost;
        Portal& portal;
        QuickEntryKey& quickEntryKey;
        Preferences& preferences;
        AppModel& model;
        LiveDocument& list; // the model's
        MenuServer& menu;
        MainWindowController& window;
        dravel::Updater& updater;
        DesktopActions actions;
        dravel::Appearance platformAppearance; // where the desktop prefers neither light nor dark
        std::string activationToken;
        bool startedByBus; // for whoever called: that call says what is wanted
        std::function<void()> quit;
    };
    explicit AppDelegate(Ports);

    void launch();

  private:
    void observe();
    void joinSession(const QDBusConnection&);
    void doWithoutSession();
    void prepareWindows(); // any
    void prepareWindow();  // the main one, with its menus
    void showWindow(const std::string& activationToken = {});
    void trayAnswered(bool shown);
    void showTask(const std::string& key, const std::string& activationToken = {});
    void installMenu();
    void refreshTray();
    void refreshTraySoon();
    void followColours();

    void perform(const MenuCommand&);
    void activate(const SingleInstance::Activation&);

    Ports ports_;
    SystemEvents events_;
    std::optional<StatusItem> item_; // with the session bus
    bool windowsPrepared_ = false, menuInstalled_ = false;
    bool refreshPending_ = false;
    std::vector<dravel::Connection> connections_;
    dravel::Timer busPatience_;
};

}
