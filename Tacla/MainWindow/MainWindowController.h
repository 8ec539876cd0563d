#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/DesktopActions.h"
#include "Tacla/MainWindow/PageContents.h"
#include "Tacla/Preferences/Preferences.h"

#include <QSize>

#include <filesystem>
#include <memory>
#include <string>

class QMainWindow;

namespace tacla {

class MainWindow;
class QuickEntry;

// The size that a window's content may have on a screen of which that much is free. Where the desktop does not tell of
// its panels, room for one is left. What the frame takes up is not known before the window shows: a title bar's usual
// height is left for it.
QSize roomForContent(QSize free, bool panelsKnown);

// How a picture of the window is drawn.
struct Snapshot {
    bool dark = false;
    Section section = Section::today;
    int width = 980, height = 720;
    double scale = 1;
};

// The application's only window: made at the first demand, hidden when closed, kept for the life of the process.
class MainWindowController {
  public:
    // Everything outlives the controller.
    MainWindowController(AppModel&, Preferences&, DesktopActions, dravel::Now);
    ~MainWindowController();

    // Brings the window forward, with the activation token that the desktop gave, if any.
    void show(const std::string& activationToken = {});
    void beginTask();                      // the window gets ready to type a new task
    void showTask(const std::string& key); // on its page, with the focus; nothing when there is none of that key
    // A small panel over whatever is on the screen, to add one task: Return adds and closes, Ctrl+Return
    // adds and waits for the next, Escape only closes.
    void showQuickEntry(const std::string& activationToken = {});
    void copyTask(); // the line of the row that has the focus
    void close();
    bool isShown() const;

    // Made on the first call, without being shown: the place of the menu bar.
    QMainWindow& window();

    // Draws the window's content, without showing it, into a PNG file, or the format that the path's ending names.
    // Needs a QApplication, with the offscreen platform where there is no display. The model is one that only
    // reloaded. Throws dravel::FileError.
    static void headlessSnapshot(AppModel& passive, const DesktopActions&, const dravel::Now&,
                                 const std::filesystem::path&, const Snapshot&);

  private:
    MainWindow& made();

    AppModel& model_;
    Preferences& preferences_;
    DesktopActions actions_;
    dravel::Now now_;
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<QuickEntry> quickEntry_;
};

}
