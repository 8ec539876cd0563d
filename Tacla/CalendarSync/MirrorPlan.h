#pragma once

#include "DravelKit/Foundation/Instant.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tacla {

// State of the Google account; unknown also while the keyring does not answer.
enum class Connection { unknown, signedOut, signingIn, signedIn };

// All that decides when the tasks go to the calendar.
struct MirrorState {
    bool available = true;    // there is a calendar to speak of
    bool on = false;          // the user's switch
    bool listReadable = true; // else nothing is sent, or an unreadable list would empty the calendar
    Connection connection = Connection::unknown;
    bool asking = false; // for the account
    bool running = false;
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
        listRead,
        listUnreadable,
        edited,
        savedWhileRead,
        listChosen,
        syncDue,
        runEnded,
        runFailed,
        accountTold,
        accountFailed,
        signInAsked,
        signedIn,
        signInFailed,
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
    std::string message = {};                 // of a failure or a report
    Connection account = Connection::unknown; // accountTold; signedOut where a run found no account
    bool on = false;                          // of a switch
    dravel::Instant at = {};                  // of an outcome
};

struct MirrorAction {
    enum class Kind { askAccount, signIn, signOut, run, storeSwitch, syncAfter };
    Kind kind;
    bool on = false;                    // storeSwitch
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
