#pragma once

#include "DravelKit/StandardMenu/AboutPanel.h"

#include <functional>
#include <vector>

class QMainWindow;
class QMenu;

namespace dravel {

// Looks for a new version of the program. Where packages update through the system there is nothing to look for.
class Updater {
  public:
    bool isAvailable() const { return false; }
    void checkForUpdates() {}
};

}

namespace dravel::StandardMenu {

struct Actions {
    std::function<void()> settings; // empty: no such entry
    std::function<void()> quit;
    // What "Annuler" takes back where the focused text field has nothing to take back; empty: nothing.
    std::function<void()> undo;
    std::function<bool()> canUndo;
};

// Fills the window's menu bar with the menus that every program of the kit has, then the further ones.
void install(QMainWindow&, const About&, const Actions&, const std::vector<QMenu*>& extra = {});

}
