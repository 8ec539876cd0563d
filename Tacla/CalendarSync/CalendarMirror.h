#pragma once

#include "Tacla/TaskList/TaskViews.h"

#include <map>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace tacla {

// The Google account and the calendar, as the model uses them: blocking calls, each made in a background job. Jobs may
// overlap (a sign-in while a sync runs), so an implementation serialises its own state.
// Every call may throw a std::exception whose what() is the French description to show.
class CalendarService {
  public:
    virtual ~CalendarService() = default;

    enum class Account { signedOut, signedIn, unreachable /* the keyring does not answer: ask again later */ };
    virtual Account account(std::stop_token) = 0;

    virtual void signIn(std::stop_token) = 0;
    virtual void signOut(std::stop_token) = 0;

    // Thrown by run, and by nothing else, when there is no account any more.
    struct NotSignedIn : std::runtime_error {
        using std::runtime_error::runtime_error;
    };

    virtual void run(const Tasks&, const std::map<std::string, std::string>& renamed, std::stop_token) = 0;
};

}
