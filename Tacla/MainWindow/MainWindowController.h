#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/DesktopActions.h"
#include "Tacla/Preferences/Preferences.h"

#include <memory>
#include <string>

class QMainWindow;

namespace tacla {

class MainWindow;

// The application's only window: made at the first demand, hidden when closed, kept for the life of the process.
class MainWindowController {
  public:
    // Everything outlives the controller.
    MainWindowController(AppModel&, Preferences&, DesktopActions, dravel::Now = dravel::systemNow);
    ~MainWindowController();

    // Brings the window forward, with the activation token that the desktop gave, if any.
    void show(const std::string& activationToken = {});
    void beginTask(); // the window gets ready to type a new task
    void close();
    bool isShown() const;

    // Made on the first call, without being shown: the place of the menu bar.
    QMainWindow& window();

  private:
    MainWindow& made();

    AppModel& model_;
    Preferences& preferences_;
    DesktopActions actions_;
    dravel::Now now_;
    std::unique_ptr<MainWindow> window_;
};

}
