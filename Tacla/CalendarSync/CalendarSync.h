#pragma once

#include "DravelKit/GoogleAuth/GoogleAuth.h"
#include "DravelKit/Net/HttpClient.h"
#include "Tacla/Preferences/Preferences.h"
#include "Tacla/TaskList/TaskViews.h"

#include <chrono>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

namespace tacla {

// Why a run ended early. what() is the description.
class SyncError : public std::runtime_error {
  public:
    enum class Kind {
        http,         // the service answered something else than was needed
        emptyFile,    // no task at all, while the calendar holds events
        calendarGone, // a calendar that we did not create, and must not create anew
        settingsLost, // they cannot be read: whether there is a calendar is not known
        busy,         // another run went on for too long
        inDoubt,      // the service may have made a calendar whose identifier never came
    };

    // `task` is the title of the one that the request was about, if any.
    static SyncError http(long status, const std::string& body, const std::string& task = "");
    explicit SyncError(Kind kind, long status = 0, const std::string& body = "", const std::string& task = "");

    std::string description() const { return what(); } // in French

    const Kind kind;
    const long status;      // of http
    const std::string hint; // see hintOf
    const bool passing;     // see passes
};

// What to say beside the message: the task in question, what the service itself says, and what to do. Often nothing.
std::string hintOf(const std::exception&);
// Whether a run that ended with it may well go through a little later, with nobody doing anything about it.
bool passes(const std::exception&);

// How fast requests may follow one another, so that the service never has a reason to refuse one: 200 at once, then 6 a
// second. After a refusal for that reason the next run waits 1, 2, 4 … 64 s, or as long as the service asked for.
// A value without a clock: every question brings its moment, and every answer is the time still to wait.
class Pace {
  public:
    using Moment = std::chrono::steady_clock::time_point;
    using Wait = std::chrono::milliseconds;

    Wait beforeRun(Moment now) const;
    Wait beforeRequest(Moment now); // counts the request

    void refused(Moment now, std::optional<std::chrono::seconds> retryAfter);
    void completed(); // a whole run went through

  private:
    double allowance_ = 200; // requests that may go at once; negative while requests wait for their turn
    Moment counted_{};
    Moment notBefore_{};
    std::chrono::seconds backoff_{1};
};

// The one-way mirror of the dated tasks in a Google calendar of Tacla's own. Between runs it keeps nothing but the
// calendar's identifier, in the preferences, and for the day when they lose it: each run lists the calendar anew.
class CalendarSync {
  public:
    // How the mirror reads time and waits; a test gives it a clock of its own.
    struct Time {
        std::function<Pace::Moment()> now;
        std::function<void(Pace::Wait, std::stop_token)> sleep; // wakes up at once when stopped
        static Time real();
    };

    // `calendarApi` is the address of the service, ending in "/calendar/v3".
    CalendarSync(dravel::GoogleAuth&, Preferences&, std::string calendarApi, const std::filesystem::path& lockFolder,
                 Time = Time::real(), dravel::HttpLimits = {});

    // Held by the one run of this user, over all processes, for as long as it lives.
    using Turn = std::shared_ptr<const void>;
    // Waits as long as the service asked for, then until no other run is under way: `waits` is told after a second, and
    // after two minutes it is given up (SyncError). Blocking, for a background job.
    Turn takeTurn(const std::stop_token& = {}, const std::function<void()>& waits = {});

    struct Result {
        int created = 0, updated = 0, deleted = 0;
        std::vector<std::string> leftOut; // titles of dated tasks that no event can show
        std::string hint() const;         // which ones they are; "" when there are none
    };
    using Progress = std::function<void(std::size_t sent, std::size_t planned)>;

    // One whole pass, request after request. `tasks` is every task of the file, read once it was our turn; `renamed`
    // maps keys as the last pass knew them to keys of now. Blocking, for a background job. The first failure ends the
    // pass: SyncError, AuthError, HttpError, or FileError when the identifier cannot be stored. What was sent by then
    // stays, and the next pass does the rest. Once stopped, nothing more is sent.
    Result run(const Turn&, const Tasks& tasks, const std::map<std::string, std::string>& renamed,
               const std::stop_token& = {}, const Progress& = {});

  private:
    struct Pass;

    std::optional<Preferences::Calendar> calendar();
    void store();
    void giveBackToSettings();

    dravel::GoogleAuth& auth_;
    Preferences& preferences_;
    const std::string calendarApi_;
    const std::filesystem::path lock_;
    const Time time_;
    const dravel::HttpLimits limits_;

    // Of one run at a time.
    Pace pace_;
    std::optional<Preferences::Calendar> known_; // for settings that are lost
    bool unstored_ = false;                      // the preferences could not be written
};

}
