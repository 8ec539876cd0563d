#pragma once

#include "Tacla/AppModel/AppModel.h"
#include "Tacla/Linux/SystemEvents.h"
#include "Tacla/Linux/MenuServer.h"
#include "Tacla/Linux/StatusItem.h"

#include <functional>
#include <optional>
#include <string>

namespace tacla {

// The program's face in the tray: keeps the icon, its texts and its menu in step with the model.
class Tray {
  public:
    struct Choices {
        std::function<void(const MenuCommand&)> chosen;                    // an entry of the menu
        std::function<void(const std::string& activationToken)> activated; // the icon itself
    };
    Tray(const AppModel&, ColourScheme&, bool updatesAvailable, Choices);

    void openOn(const QDBusConnection&);
    void refresh();
    void askIfShown(const std::function<void(bool)>&);

  private:
    const AppModel& model_;
    const ColourScheme& scheme_;
    Choices choices_;
    MenuServer menu_;
    std::optional<StatusItem> item_;
    dravel::Connection schemeChanged_, activated_;
};

}
