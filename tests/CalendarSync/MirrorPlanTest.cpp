#include "Tacla/CalendarSync/MirrorPlan.h"

#include <gtest/gtest.h>

namespace tacla::testing {
namespace {

using namespace std::chrono_literals;
using enum Connection;
using On = MirrorEvent::Kind;
using Do = MirrorAction::Kind;
using Actions = std::vector<MirrorAction>;

constexpr auto silent = "Pas connecté à Google : le trousseau de clés est verrouillé ou ne répond pas";

Actions after(std::chrono::milliseconds delay) { return {{.kind = Do::syncAfter, .delay = delay}}; }

struct Row {
    const char* what;
    MirrorState state;
    MirrorEvent event;
    MirrorState then;
    Actions actions;
};

const MirrorState ready{.on = true, .connection = signedIn};
const MirrorState running{.on = true, .connection = signedIn, .running = true};
const MirrorState off{.connection = signedIn};
const MirrorState asking{.on = true, .asking = true};
const dravel::Instant now{90s};

MirrorState waiting(std::chrono::seconds left, bool noBrowser = false) {
    return {.connection = signingIn, .signIn = SignInWait{"adresse", left, noBrowser}};
}

const Row rows[] = {
    {"a run", ready, {On::syncDue}, running, {{.kind = Do::run}}},
    {"never two runs", running, {On::syncDue}, running, {}},
    {"nothing is sent while off", off, {On::syncDue}, off, {}},
    {"nor of a list that cannot be read",
     {.on = true, .listReadable = false, .connection = signedIn},
     {On::syncDue},
     {.on = true, .listReadable = false, .connection = signedIn},
     {}},
    {"nor without an account",
     {.on = true, .connection = signedOut},
     {On::syncDue},
     {.on = true, .connection = signedOut},
     {}},
    {"it is asked for first", {.on = true}, {On::syncDue}, asking, {{.kind = Do::askAccount, .on = true}}},
    {"once at a time", asking, {On::syncDue}, asking, {}},
    {"a run that ended",
     {.on = true, .connection = signedIn, .running = true, .status = "hors ligne"},
     {.kind = On::runEnded, .at = now},
     {.on = true, .connection = signedIn, .lastSync = now},
     {}},
    {"a run that failed",
     running,
     {On::runFailed, "hors ligne"},
     {.on = true, .connection = signedIn, .status = "hors ligne"},
     {}},
    {"a run that found no account",
     running,
     {On::runFailed, "Non connecté", signedOut},
     {.on = true, .connection = signedOut, .status = "Non connecté"},
     {}},

    {"an edit", running, {On::edited}, running, after(500ms)},
    {"a save while it was read", ready, {On::savedWhileRead}, ready, after(1s)},
    {"a wake", ready, {On::wokeUp}, ready, after(2s)},
    {"another list", ready, {On::listChosen}, ready, after(0s)},
    {"a period", ready, {On::periodPassed}, ready, after(0s)},
    {"a period without an answer", {.on = true}, {On::periodPassed}, asking, {{.kind = Do::askAccount, .on = true}}},
    {"the keyring comes", {.on = true}, {On::accountStoreAppeared}, asking, {{.kind = Do::askAccount, .on = true}}},
    {"it is of no interest once the account is known", off, {On::accountStoreAppeared}, off, {}},

    {"the account is told",
     {.on = true, .asking = true, .status = silent},
     {On::accountTold, "", signedIn},
     ready,
     after(0s)},
    {"another message stays",
     {.asking = true, .status = "réglages"},
     {On::accountTold, "", signedOut},
     {.connection = signedOut, .status = "réglages"},
     after(0s)},
    {"no answer while mirroring", asking, {On::accountTold, "", unknown}, {.on = true, .status = silent}, {}},
    {"no answer that anybody waits for", {.asking = true}, {On::accountTold, "", unknown}, {}, {}},
    {"an answer that fails", {.asking = true}, {On::accountFailed, "?"}, {.connection = signedOut}, after(0s)},
    {"a sign-in was faster",
     {.connection = signingIn, .asking = true},
     {On::accountTold, "", signedOut},
     {.connection = signingIn},
     {}},

    {"a sign-in", {.connection = signedOut}, {On::signInAsked}, {.connection = signingIn}, {{.kind = Do::signIn}}},
    {"never two", {.connection = signingIn}, {On::signInAsked}, {.connection = signingIn}, {}},
    {"nowhere to sign in", {.available = false}, {On::signInAsked}, {.available = false}, {}},
    {"signed in",
     {.connection = signingIn, .status = "refusé"},
     {On::signedIn},
     {.connection = signedIn},
     {{.kind = Do::storeSwitch, .on = true}}},
    {"refused",
     {.connection = signingIn},
     {On::signInFailed, "refusé"},
     {.connection = signedOut, .status = "refusé"},
     {}},
    {"it waits in the browser",
     {.connection = signingIn},
     {.kind = On::signInWaits, .message = "adresse", .left = 300s},
     waiting(300s),
     {{.kind = Do::countDown}}},
    {"a second less", waiting(300s), {On::signInSecondPassed}, waiting(299s), {{.kind = Do::countDown}}},
    {"no browser", waiting(9s), {On::browserMissing}, waiting(9s, true), {}},
    {"an end of the wait", waiting(9s), {On::signInFailed, "délai"}, {.connection = signedOut, .status = "délai"}, {}},
    {"nothing to count", {.connection = signedOut}, {On::signInSecondPassed}, {.connection = signedOut}, {}},
    {"left, and nobody is asked for a password to see what is there",
     waiting(9s),
     {On::signInLeft},
     {.asking = true},
     {{.kind = Do::stopSignIn}, {.kind = Do::askAccount}}},
    {"what was left is silent", {.connection = signedOut}, {On::signInFailed, "?"}, {.connection = signedOut}, {}},
    {"and undone where it had just been done", off, {On::signedIn}, off, {{.kind = Do::signOut}}},
    {"nor does it wait", {.connection = signedOut}, {On::signInWaits, "adresse"}, {.connection = signedOut}, {}},
    {"a look without mirroring asks nobody", {}, {On::started}, {.asking = true}, {{.kind = Do::askAccount}}},
    {"signed out",
     {.connection = signedIn, .status = "hors ligne"},
     {On::signedOut},
     {.connection = signedOut, .status = "hors ligne"},
     {}},
    {"a token that stays",
     off,
     {On::signOutFailed, "verrouillé"},
     {.connection = signedIn, .status = "verrouillé"},
     {}},

    {"switched on", off, {.kind = On::switched, .on = true}, ready, after(0s)},
    {"on only where it can be remembered",
     off,
     {.kind = On::switchFailed, .message = "plein", .on = true},
     {.connection = signedIn, .status = "plein"},
     after(0s)},
    {"off in any case", ready, {On::switchFailed, "plein"}, {.connection = signedIn, .status = "plein"}, after(0s)},
    {"enabled anew",
     {.connection = signedIn, .status = "plein"},
     {On::enableAsked},
     off,
     {{.kind = Do::storeSwitch, .on = true}}},
};

TEST(MirrorPlan, IsWhatBecomesOfTheMirrorAndWhatThereIsToDo) {
    for (const auto& row : rows) {
        const auto plan = planMirror(row.state, row.event);
        EXPECT_TRUE(plan.state == row.then) << row.what << ": " << plan.state.status.value_or("no status");
        EXPECT_TRUE(plan.actions == row.actions) << row.what;
    }
}

}
}
