#pragma once

#include <map>
#include <string>

namespace tacla {

// Follows tasks whose title, and with it the key, changed while the application runs.
class RenamedKeys {
  public:
    using Map = std::map<std::string, std::string>; // old key to new key

    void remember(const Map&);

    // From the keys that the calendar knows to the present ones.
    const Map& sinceSync() const { return sinceSync_; }
    // After a successful sync that was given this map: what was renamed meanwhile stays, from the key given then.
    void synced(const Map&);

  private:
    Map sinceSync_;
};

}
