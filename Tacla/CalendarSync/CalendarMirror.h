#pragma once

#include "DravelKit/GoogleAuth/OAuthClient.h"
#include "DravelKit/Run/Background.h"
#include "DravelKit/Run/MainLoop.h"
#include "Tacla/CalendarSync/MirrorPlan.h"
#include "Tacla/Preferences/Preferences.h"
#include "Tacla/TaskDocument/RenamedKeys.h"
#include "Tacla/TaskList/TaskViews.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <utility>

namespace tacla {

// The Google account and the calendar, as the mirror uses them: blocking calls, each made in a background job. Jobs may
// overlap (a sign-in while a sync runs), so an implementation serialises its own state.
// Every call may throw a std::exception whose what() is the French description to show.
class CalendarService {
  public:
    virtual ~CalendarService() = default;

    // Unknown: the keyring does not answer, or would only after asking the user when that is not wanted.
    virtual Connection account(bool mayAskUser, std::stop_token) = 0;

    using Tell = std::function<void(const MirrorEvent&)>; // of the wait for the user; from any thread
    virtual void signIn(const Tell&, std::stop_token) = 0;
    virtual void signOut(std::stop_token) = 0;

    // How takeTurn and run fail, when there is more to say: a hint beside the message, and whether it is a trouble that
    // passes by itself.
    struct Failure : std::runtime_error {
        Failure(const std::string& message, std::string toDo, bool doesPass)
            : std::runtime_error(message), hint(std::move(toDo)), passing(doesPass) {}
        std::string hint;
        bool passing;
    };
    // By these, and by nothing else, when there is no account any more.
    struct NotSignedIn : Failure {
        explicit NotSignedIn(const std::string& message, std::string toDo = {})
            : Failure(message, std::move(toDo), false) {}
    };

    // Held by the one run of this user, over all processes. `waits` may be called, in the job, when it takes long.
    using Turn = std::shared_ptr<const void>;
    virtual Turn takeTurn(std::stop_token, const std::function<void()>& waits) = 0;
    // Returns a hint about what went through, "" when there is nothing to say. Sends nothing more once it is stopped.
    virtual std::string run(const Turn&, const Tasks&, const RenamedKeys::Map& renamed, std::stop_token) = 0;

    // The file without which nobody can sign in. These two do not block, and need no background job.
    virtual dravel::OAuthClient::Source client() const = 0;
    virtual void useClient(const std::filesystem::path& downloaded) = 0;
};

// Performs what planMirror decides: runs the background jobs, sets the one timer, stores the switch, and hands each
// outcome back as an event. Main thread only.
class CalendarMirror {
  public:
    // `tasks` and `renamed` are kept when a run starts to send, and what it has carried over is taken out of
    // `renamed`.
    // No service: the mirror stands still.
    CalendarMirror(dravel::MainLoop&, dravel::Background&, Preferences&, CalendarService*, const TaskList& tasks,
                   RenamedKeys& renamed, std::function<void()> changed);

    const MirrorState& state() const { return state_; }

    void tell(MirrorEvent); // and `changed`, when the state is another one
    void tell(MirrorEvent::Kind kind) { tell(MirrorEvent{kind}); }
    bool handle(const MirrorEvent&);                         // whether the state changed; `changed` is not told
    void useClient(const std::filesystem::path& downloaded); // a failure becomes status text

  private:
    using Turn = CalendarService::Turn;

    bool perform(const MirrorAction&);
    bool store(bool on);
    void takeTurn();
    void send();
    void signIn();
    template <class Result, class Job>
    void start(Job, MirrorEvent::Kind done, MirrorEvent::Kind failed, const dravel::Lifetime&);
    template <class Result, class Job>
    void startStoppable(Job, std::function<void(const dravel::Outcome<Result>&)> done);

    dravel::MainLoop& loop_;
    dravel::Background& background_;
    Preferences& preferences_;
    CalendarService* service_;
    const TaskList& tasks_;
    RenamedKeys& renamed_;
    std::function<void()> changed_;

    MirrorState state_;
    std::stop_source stop_; // of the run of now
    Turn turn_;             // while it is decided what to do with it
    TaskList sentTasks_;
    RenamedKeys::Map sent_;
    dravel::Timer nextSync_, second_;

    // The last attempt to sign in. What an earlier one comes to, which the user has left, is of no interest.
    struct SignIn {
        std::stop_source stop;
        dravel::Lifetime life;
    };
    std::optional<SignIn> signIn_;
    dravel::Lifetime life_;
};

}
