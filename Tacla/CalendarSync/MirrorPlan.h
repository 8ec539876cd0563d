#pragma once

#include "DravelKit/Foundation/Instant.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tacla {

// State of the Google account; unknown also while the keyring does not answer.
enum class Connection { unknown, signedOut, signingIn, signedIn };

// A sign-in that waits for the user in the browser.
struct SignInWait {
    std::string address; // for the browser, and for the user's eyes only
    std::chrono::seconds left{};
    bool noBrowser = false; // none could be opened

    bool operator==(const SignInWait&) const = default;
};

// All that decides when the tasks go to the calendar.
struct MirrorState {
    bool available = true;    // there is a calendar to speak of
    bool on = false;          // the user's switch
    bool listReadable = true; // else nothing is sent, or an unreadable list would empty the calendar
    Connection connection = Connection::unknown;
    std::optional<SignInWait> signIn;        // once the browser is asked for
    bool asking = false;                     // for the account
    bool leaving = false;                    // a sign-out is under way
    bool running = false;                    // also while it waits for its turn
    bool stopping = false;                   // the run of now, whatever it comes to
    bool again = false;                      // a run was asked for during the run of now
    bool due = false;                        // the next run has its time
    std::size_t retries = 0;                 // since the last success
    std::optional<dravel::Instant> lastSync; // end of the last successful run
    std::optional<std::string> status;       // what failed last; the application's general line
    std::optional<std::string> syncHint;     // beside it: what Google itself says, and what to do

    bool operator==(const MirrorState&) const = default;
};

// What happens to the mirror: by the user, around it, and as the outcome of its own actions.
struct MirrorEvent {
    enum class Kind {
        started,
        accountStoreAppeared,
        periodPassed,
        wokeUp,
        networkBack,
        listRead,
        listUnreadable,
        edited,
        savedWhileRead,
        listChosen,
        syncDue,
        runWaits,
        turnCame,
        runEnded,
        runFailed,
        accountTold,
        accountFailed,
        signInAsked,
        signInWaits,
        signInSecondPassed,
        browserMissing,
        signInLeft,
        signedIn,
        signInFailed,
        clientChosen,
        signOutAsked,
        signedOut,
        signOutFailed,
        switchAsked,
        enableAsked,
        switched,
        switchFailed,
        reported,
    };
    Kind kind;
    std::string message = {};                 // of a failure or a report; the address where the sign-in waits
    Connection account = Connection::unknown; // accountTold; signedOut where a run found no account
    bool on = false;                          // of a switch
    dravel::Instant at = {};                  // of an outcome
    std::string hint = {};                    // of a run: beside the message, or about what was left out
    bool passing = false;                     // of a failure that may be over a little later
    bool listChanged = false;                 // of a run: the tasks are no longer those that it sent
    std::chrono::seconds left{};              // signInWaits
};

struct MirrorAction {
    // takeTurn begins a run, send goes on with it; stopRun lets nothing more of it go out.
    enum class Kind {
        askAccount,
        signIn,
        countDown,
        stopSignIn,
        signOut,
        takeTurn,
        send,
        stopRun,
        storeSwitch,
        syncAfter
    };
    Kind kind;
    bool on = false;                    // storeSwitch; askAccount: the user may be asked to unlock the keyring
    std::chrono::milliseconds delay{0}; // syncAfter: takes the place of an earlier one

    bool operator==(const MirrorAction&) const = default;
};

struct MirrorPlan {
    MirrorState state;
    std::vector<MirrorAction> actions;
};

// The mirror as a machine: what becomes of it, and what there is to do.
MirrorPlan planMirror(MirrorState, const MirrorEvent&);
}
