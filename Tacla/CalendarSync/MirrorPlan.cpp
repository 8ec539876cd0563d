#include "Tacla/CalendarSync/MirrorPlan.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tacla {

namespace {

using namespace std::chrono_literals;
using Kind = MirrorEvent::Kind;
using Do = MirrorAction::Kind;
using Actions = std::vector<MirrorAction>;

constexpr auto soon = 500ms;
constexpr std::chrono::seconds retryDelays[] = {15s, 30s, 60s, 120s, 240s}; // then the period holds

constexpr auto waitsForAnother = "Une autre recopie est en cours : Tacla attend son tour";
constexpr auto keyringSilent = "Pas connecté à Google : le trousseau de clés est verrouillé ou ne répond pas";

Actions syncAfter(std::chrono::milliseconds delay) { return {{.kind = Do::syncAfter, .delay = delay}}; }

Actions storeSwitch(bool on) { return {{.kind = Do::storeSwitch, .on = on}}; }

void say(MirrorState& state, std::optional<std::string> status, const std::string& hint = "") {
    state.status = std::move(status);
    state.syncHint = hint.empty() ? std::nullopt : std::optional(hint);
}

Actions ask(MirrorState& state) {
    if (!state.available || std::exchange(state.asking, true)) return {};
    // Who does not mirror is not troubled for a password.
    return {{.kind = Do::askAccount, .on = state.on}};
}

Actions askIfUnknown(MirrorState& state) { return state.connection == Connection::unknown ? ask(state) : Actions(); }

Actions told(MirrorState& state, Connection account) {
    state.asking = false;
    if (state.connection != Connection::unknown) return {}; // a sign-in was faster
    if (account == Connection::unknown) {
        if (state.on) say(state, keyringSilent);
        return {};
    }
    if (state.status == keyringSilent) say(state, {});
    state.connection = account;
    return syncAfter(0s);
}

bool maySend(const MirrorState& state) {
    return state.on && state.connection == Connection::signedIn && !state.leaving && state.listReadable;
}

Actions sync(MirrorState& state) {
    if (state.on && state.connection == Connection::unknown) return ask(state);
    if (!maySend(state)) return {};
    if (std::exchange(state.running, true)) return state.again = true, Actions();
    return {{.kind = Do::takeTurn}};
}

Actions stopRun(MirrorState& state) {
    if (!state.running || std::exchange(state.stopping, true)) return {};
    return {{.kind = Do::stopRun}};
}

// What becomes of the run of now is known: whether the next one is wanted soon.
bool over(MirrorState& state, bool listChanged) {
    state.running = state.stopping = false;
    if (state.syncHint == waitsForAnother) state.syncHint.reset();
    return std::exchange(state.again, false) || listChanged;
}

Actions turnCame(MirrorState& state) {
    if (state.stopping || !maySend(state)) return over(state, false) ? syncAfter(soon) : Actions();
    if (state.syncHint == waitsForAnother) state.syncHint.reset();
    state.again = false; // what was asked for meanwhile goes with it
    return {{.kind = Do::send}};
}

Actions ended(MirrorState& state, const MirrorEvent& event) {
    state.lastSync = event.at;
    state.retries = 0;
    if (!state.stopping) say(state, {}, event.hint);
    return over(state, event.listChanged) ? syncAfter(soon) : Actions();
}

Actions failed(MirrorState& state, const MirrorEvent& event) {
    const bool stopped = state.stopping;
    const bool wanted = over(state, event.listChanged);
    if (!stopped) {
        if (event.account == Connection::signedOut) state.connection = Connection::signedOut;
        say(state, event.message, event.hint);
    }
    if (wanted) return syncAfter(soon);
    if (stopped || state.due || !event.passing || state.retries == std::size(retryDelays)) return {};
    return syncAfter(retryDelays[state.retries++]);
}

// A run that is on its way may have met the lack of it.
Actions networkBack(MirrorState& state) {
    if (state.running) return state.again = true, Actions();
    return std::exchange(state.retries, 0) > 0 ? syncAfter(0s) : Actions();
}

Actions read(MirrorState& state) { return std::exchange(state.listReadable, true) ? Actions() : syncAfter(soon); }

Actions signOut(MirrorState& state) {
    if (!state.available) return {};
    auto actions = stopRun(state);
    state.leaving = true;
    actions.push_back({.kind = Do::signOut});
    return actions;
}

// Nothing more leaves the computer once the user has said no, however long it takes to remember it.
Actions switchAsked(MirrorState& state, bool on) {
    auto actions = on ? Actions() : stopRun(state);
    actions.push_back({.kind = Do::storeSwitch, .on = on});
    return actions;
}

Actions signIn(MirrorState& state) {
    if (!state.available || std::exchange(state.connection, Connection::signingIn) == Connection::signingIn) return {};
    return {{.kind = Do::signIn}};
}

Actions waits(MirrorState& state, const MirrorEvent& event) {
    if (state.connection != Connection::signingIn) return {};
    state.signIn = SignInWait{.address = event.message, .left = event.left};
    return {{.kind = Do::countDown}};
}

Actions secondPassed(MirrorState& state) {
    if (!state.signIn) return {};
    if (state.signIn->left > 0s) --state.signIn->left;
    return {{.kind = Do::countDown}};
}

// At once for the user. An account of before may still be there, and to look needs no password.
Actions leaveSignIn(MirrorState& state) {
    if (state.connection != Connection::signingIn) return {};
    state.connection = Connection::unknown;
    state.signIn.reset();
    Actions actions{{.kind = Do::stopSignIn}};
    if (!std::exchange(state.asking, true)) actions.push_back({.kind = Do::askAccount});
    return actions;
}

Actions becomes(MirrorState& state, Connection connection, std::optional<std::string> status) {
    state.connection = connection;
    if (state.status != status) say(state, std::move(status));
    return {};
}

Actions noBrowser(MirrorState& state) {
    if (state.signIn) state.signIn->noBrowser = true;
    return {};
}

Actions signedIn(MirrorState& state) {
    if (state.connection != Connection::signingIn) return {{.kind = Do::signOut}}; // left a moment too late
    state.signIn.reset();
    becomes(state, Connection::signedIn, {});
    return storeSwitch(true);
}

Actions signInFailed(MirrorState& state, const MirrorEvent& event) {
    if (state.connection != Connection::signingIn) return {}; // left by the user
    state.signIn.reset();
    return becomes(state, Connection::signedOut, event.message);
}

// Off is obeyed even when it cannot be remembered.
Actions switched(MirrorState& state, const MirrorEvent& event, bool stored) {
    if (stored || !event.on) state.on = event.on;
    if (!stored) say(state, event.message);
    return syncAfter(0s);
}

Actions next(MirrorState& state, const MirrorEvent& event) {
    switch (event.kind) {
    case Kind::started: return ask(state);
    case Kind::accountStoreAppeared: return askIfUnknown(state);
    case Kind::periodPassed: return state.connection == Connection::unknown ? ask(state) : syncAfter(0s);
    case Kind::wokeUp: return state.retries = 0, syncAfter(2s);
    case Kind::networkBack: return networkBack(state);

    case Kind::listRead: return read(state);
    case Kind::listUnreadable: return state.listReadable = false, Actions();
    case Kind::edited: return syncAfter(soon); // a burst of edits makes one run
    case Kind::savedWhileRead: return syncAfter(1s);
    case Kind::listChosen: return syncAfter(0s);

    case Kind::syncDue: return sync(state);
    case Kind::runWaits: return state.syncHint = waitsForAnother, Actions();
    case Kind::turnCame: return turnCame(state);
    case Kind::runEnded: return ended(state, event);
    case Kind::runFailed: return failed(state, event);

    case Kind::accountTold: return told(state, event.account);
    case Kind::accountFailed: return told(state, Connection::signedOut);

    case Kind::signInAsked: return signIn(state);
    case Kind::signInWaits: return waits(state, event);
    case Kind::signInSecondPassed: return secondPassed(state);
    case Kind::browserMissing: return noBrowser(state);
    case Kind::signInLeft: return leaveSignIn(state);
    case Kind::signedIn: return signedIn(state);
    case Kind::signInFailed: return signInFailed(state, event);
    case Kind::clientChosen: return becomes(state, state.connection, {});

    case Kind::signOutAsked: return signOut(state);
    case Kind::signedOut: return state.leaving = false, becomes(state, Connection::signedOut, state.status);
    // A token that could not be forgotten is still there: saying otherwise would be wrong.
    case Kind::signOutFailed: return state.leaving = false, becomes(state, state.connection, event.message);

    case Kind::switchAsked: return switchAsked(state, event.on);
    case Kind::enableAsked: return say(state, {}), storeSwitch(true);
    case Kind::switched: return switched(state, event, true);
    case Kind::switchFailed: return switched(state, event, false);

    case Kind::reported: return becomes(state, state.connection, event.message);
    }
    return {};
}

}

MirrorPlan planMirror(MirrorState state, const MirrorEvent& event) {
    if (event.kind == Kind::syncDue) state.due = false;
    auto actions = next(state, event);
    state.due |= std::ranges::find(actions, Do::syncAfter, &MirrorAction::kind) != actions.end();
    return {std::move(state), std::move(actions)};
}

}
