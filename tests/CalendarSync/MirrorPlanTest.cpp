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

MirrorEvent told(Connection account) { return {On::accountTold, "", account}; }
MirrorState at(Connection connection) { return {.connection = connection}; }
MirrorState with(MirrorState state, const char* status) {
    state.status = status;
    return state;
}

const MirrorState ready{.on = true, .connection = signedIn}, lost{.on = true, .connection = signedOut};
const MirrorState running{.on = true, .connection = signedIn, .running = true}, off = at(signedIn);
const MirrorState unasked{.on = true}, asking{.on = true, .asking = true}, asked{.asking = true},
    nowhere{.available = false};
const MirrorState unreadable{.on = true, .listReadable = false, .connection = signedIn};
const dravel::Instant now{90s};
const MirrorState synced{.on = true, .connection = signedIn, .lastSync = now};
const Actions ask{{.kind = Do::askAccount}}, switchOn{{.kind = Do::storeSwitch, .on = true}};

const Row rows[] = {
    {"a run", ready, {On::syncDue}, running, {{.kind = Do::run}}},
    {"never two runs", running, {On::syncDue}, running, {}},
    {"nothing is sent while off", off, {On::syncDue}, off, {}},
    {"nor of a list that cannot be read", unreadable, {On::syncDue}, unreadable, {}},
    {"nor without an account", lost, {On::syncDue}, lost, {}},
    {"it is asked for first", unasked, {On::syncDue}, asking, ask},
    {"once at a time", asking, {On::syncDue}, asking, {}},
    {"a run that ended", with(running, "hors ligne"), {.kind = On::runEnded, .at = now}, synced, {}},
    {"a run that failed", running, {On::runFailed, "hors ligne"}, with(ready, "hors ligne"), {}},
    {"one that found no account", running, {On::runFailed, "Non connecté", signedOut}, with(lost, "Non connecté"), {}},

    {"an edit", running, {On::edited}, running, after(500ms)},
    {"a save while it was read", ready, {On::savedWhileRead}, ready, after(1s)},
    {"a wake", ready, {On::wokeUp}, ready, after(2s)},
    {"another list", ready, {On::listChosen}, ready, after(0s)},
    {"a period", ready, {On::periodPassed}, ready, after(0s)},
    {"a period without an answer", unasked, {On::periodPassed}, asking, ask},
    {"the keyring comes", unasked, {On::accountStoreAppeared}, asking, ask},
    {"it is of no interest once the account is known", off, {On::accountStoreAppeared}, off, {}},

    {"the account is told", with(asking, silent), told(signedIn), ready, after(0s)},
    {"another message stays", with(asked, "réglages"), told(signedOut), with(at(signedOut), "réglages"), after(0s)},
    {"no answer while mirroring", asking, told(unknown), with(unasked, silent), {}},
    {"no answer that anybody waits for", asked, told(unknown), {}, {}},
    {"an answer that fails", asked, {On::accountFailed, "?"}, at(signedOut), after(0s)},
    {"a sign-in was faster", {.connection = signingIn, .asking = true}, told(signedOut), at(signingIn), {}},

    {"a sign-in", at(signedOut), {On::signInAsked}, at(signingIn), {{.kind = Do::signIn}}},
    {"never two", at(signingIn), {On::signInAsked}, at(signingIn), {}},
    {"nowhere to sign in", nowhere, {On::signInAsked}, nowhere, {}},
    {"signed in", with(at(signingIn), "refusé"), {On::signedIn}, off, switchOn},
    {"refused", at(signingIn), {On::signInFailed, "refusé"}, with(at(signedOut), "refusé"), {}},
    {"signed out", with(off, "hors ligne"), {On::signedOut}, with(at(signedOut), "hors ligne"), {}},
    {"a token that stays", off, {On::signOutFailed, "verrouillé"}, with(off, "verrouillé"), {}},

    {"switched on", off, {.kind = On::switched, .on = true}, ready, after(0s)},
    {"on only where it can be remembered",
     off,
     {On::switchFailed, "plein", unknown, true},
     with(off, "plein"),
     after(0s)},
    {"off in any case", ready, {On::switchFailed, "plein"}, with(off, "plein"), after(0s)},
    {"enabled anew", with(off, "plein"), {On::enableAsked}, off, switchOn},
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
