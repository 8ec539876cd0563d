#pragma once

#include "DravelKit/GoogleAuth/GoogleAuth.h"
#include "DravelKit/Net/HttpClient.h"
#include "Tacla/CalendarSync/Pace.h"
#include "Tacla/CalendarSync/SyncError.h"
#include "Tacla/Preferences/Preferences.h"
#include "Tacla/TaskList/TaskViews.h"

#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>

namespace tacla {

// The one-way mirror of the dated tasks in a Google calendar of Tacla's own. Between runs it keeps nothing but the
// calendar's identifier, in the preferences: each run lists the calendar anew.
class CalendarSync {
  public:
    // How the mirror reads time and waits; a test gives it a clock of its own.
    struct Time {
        std::function<Pace::Moment()> now;
        std::function<void(Pace::Wait, std::stop_token)> sleep; // wakes up at once when stopped
        static Time real();
    };

    // `calendarApi` is the address of the service, ending in "/calendar/v3".
    CalendarSync(dravel::GoogleAuth&, Preferences&, std::string calendarApi, Time = Time::real(),
                 dravel::HttpLimits = {});

    struct Result {
        int created = 0, updated = 0, deleted = 0;
    };
    using Progress = std::function<void(std::size_t sent, std::size_t planned)>;

    // One whole pass, request after request; a second caller waits until the first is through. `tasks` is every task of
    // the file; `renamed` maps keys as the last pass knew them to keys of now. Blocking, for a background job. The
    // first failure ends the pass: SyncError, AuthError, HttpError, or FileError when the identifier cannot be stored.
    // What was sent by then stays, and the next pass does the rest.
    Result run(const Tasks& tasks, const std::map<std::string, std::string>& renamed, std::stop_token = {},
               const Progress& = {});

  private:
    struct Pass;

    dravel::GoogleAuth& auth_;
    Preferences& preferences_;
    const std::string calendarApi_;
    const Time time_;
    const dravel::HttpLimits limits_;

    std::mutex running_; // held for a whole pass; guards what follows
    Pace pace_;
    std::optional<std::string> unstoredCalendar_; // created, but the preferences could not be written
};

}
