#pragma once

#include "DravelKit/StandardMenu/AboutPanel.h"

#include <functional>
#include <vector>

class QMainWindow;
class QMenu;

namespace dravel::StandardMenu {

struct Actions {
    std::function<void()> settings; // empty: no such entry
    std::function<void()> quit;
};

// Fills the window's menu bar with the menus that every program of the kit has, then the further ones.
void install(QMainWindow&, const About&, const Actions&, const std::vector<QMenu*>& extra = {});

}
