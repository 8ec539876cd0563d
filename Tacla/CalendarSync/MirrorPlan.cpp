#include "Tacla/CalendarSync/MirrorPlan.h"

#include <utility>

namespace tacla {

namespace {

using namespace std::chrono_literals;
using Kind = MirrorEvent::Kind;
using Do = MirrorAction::Kind;
using Actions = std::vector<MirrorAction>;

constexpr auto keyringSilent = "Pas connecté à Google : le trousseau de clés est verrouillé ou ne répond pas";

Actions syncAfter(std::chrono::milliseconds delay) { return {{.kind = Do::syncAfter, .delay = delay}}; }

Actions storeSwitch(bool on) { return {{.kind = Do::storeSwitch, .on = on}}; }

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
        if (state.on) state.status = keyringSilent;
        return {};
    }
    if (state.status == keyringSilent) state.status.reset();
    state.connection = account;
    return syncAfter(0s);
}

Actions sync(MirrorState& state) {
    if (state.on && state.connection == Connection::unknown) return ask(state);
    if (!state.on || state.connection != Connection::signedIn || state.running || !state.listReadable) return {};
    state.running = true;
    return {{.kind = Do::run}};
}

Actions ended(MirrorState& state, dravel::Instant at) {
    state.running = false;
    state.lastSync = at;
    state.status.reset();
    return {};
}

Actions failed(MirrorState& state, const MirrorEvent& event) {
    state.running = false;
    if (event.account == Connection::signedOut) state.connection = Connection::signedOut;
    state.status = event.message;
    return {};
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
    state.status = std::move(status);
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
    if (!stored) state.status = event.message;
    return syncAfter(0s);
}

Actions next(MirrorState& state, const MirrorEvent& event) {
    switch (event.kind) {
    case Kind::started: return ask(state);
    case Kind::accountStoreAppeared: return askIfUnknown(state);
    case Kind::periodPassed: return state.connection == Connection::unknown ? ask(state) : syncAfter(0s);
    case Kind::wokeUp: return syncAfter(2s);

    case Kind::listRead: return state.listReadable = true, Actions();
    case Kind::listUnreadable: return state.listReadable = false, Actions();
    case Kind::edited: return syncAfter(500ms); // a burst of edits makes one run
    case Kind::savedWhileRead: return syncAfter(1s);
    case Kind::listChosen: return syncAfter(0s);

    case Kind::syncDue: return sync(state);
    case Kind::runEnded: return ended(state, event.at);
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

    case Kind::signOutAsked: return state.available ? Actions{{.kind = Do::signOut}} : Actions();
    case Kind::signedOut: return becomes(state, Connection::signedOut, state.status);
    // A token that could not be forgotten is still there: saying otherwise would be wrong.
    case Kind::signOutFailed: return becomes(state, state.connection, event.message);

    case Kind::switchAsked: return storeSwitch(event.on);
    case Kind::enableAsked: return state.status.reset(), storeSwitch(true);
    case Kind::switched: return switched(state, event, true);
    case Kind::switchFailed: return switched(state, event, false);

    case Kind::reported: return becomes(state, state.connection, event.message);
    }
    return {};
}

}

MirrorPlan planMirror(MirrorState state, const MirrorEvent& event) {
    auto actions = next(state, event);
    return {std::move(state), std::move(actions)};
}

}
