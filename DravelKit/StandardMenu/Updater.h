#pragma once

namespace dravel {

// Looks for a new version of the program. Where packages update through the system there is nothing to look for.
class Updater {
  public:
    bool isAvailable() const { return false; }
    void checkForUpdates() {}
};

}
