#include "Tacla/CalendarSync/MirrorPlan.h"

#include "Tacla/TaskDocument/RenamedKeys.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <tuple>
#include <utility>

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

const MirrorState ready{.on = true, .connection = signedIn}, off = at(signedIn);
const MirrorState unasked{.on = true}, asking{.on = true, .asking = true}, asked{.asking = true},
    nowhere{.available = false};
const MirrorState unreadable{.on = true, .listReadable = false, .connection = signedIn};
const MirrorState stopping{.on = true, .connection = signedIn, .running = true, .stopping = true};
MirrorState tried(bool running) {
    return {.on = true, .connection = signedIn, .running = running, .retries = 5, .status = ""};
}
const Actions ask{{.kind = Do::askAccount, .on = true}};

MirrorState waiting(std::chrono::seconds left, bool noBrowser = false) {
    return {.connection = signingIn, .signIn = SignInWait{"adresse", left, noBrowser}};
}
const Actions look{{.kind = Do::askAccount}}, leave{{.kind = Do::stopSignIn}, {.kind = Do::askAccount}};
const MirrorEvent waits{.kind = On::signInWaits, .message = "adresse", .left = 300s};
const Actions countDown{{.kind = Do::countDown}}, signOut{{.kind = Do::signOut}};

const Row rows[] = {
    {"a run that was stopped says nothing", stopping, {On::runFailed, "interrompue"}, ready, {}},
    {"nor does it begin to send", stopping, {On::turnCame}, ready, {}},
    {"then the period holds", tried(true), {.kind = On::runFailed, .passing = true}, tried(false), {}},
    {"nor of a list that cannot be read", unreadable, {On::syncDue}, unreadable, {}},
    {"it is asked for first", unasked, {On::syncDue}, asking, ask},
    {"once at a time", asking, {On::syncDue}, asking, {}},

    {"a save while it was read", ready, {On::savedWhileRead}, ready, after(1s)},
    {"a wake", ready, {On::wokeUp}, ready, after(2s)},
    {"another list", ready, {On::listChosen}, ready, after(0s)},
    {"a period without an answer", unasked, {On::periodPassed}, asking, ask},
    {"the keyring comes", unasked, {On::accountStoreAppeared}, asking, ask},
    {"it is of no interest once the account is known", off, {On::accountStoreAppeared}, off, {}},

    {"the account is told", with(asking, silent), told(signedIn), ready, after(0s)},
    {"another message stays", with(asked, "réglages"), told(signedOut), with(at(signedOut), "réglages"), after(0s)},
    {"no answer while mirroring", asking, told(unknown), with(unasked, silent), {}},
    {"no answer that anybody waits for", asked, told(unknown), {}, {}},
    {"an answer that fails", asked, {On::accountFailed, "?"}, at(signedOut), after(0s)},
    {"a sign-in was faster", {.connection = signingIn, .asking = true}, told(signedOut), at(signingIn), {}},

    {"nowhere to sign in", nowhere, {On::signInAsked}, nowhere, {}},
    {"refused", at(signingIn), {On::signInFailed, "refusé"}, with(at(signedOut), "refusé"), {}},
    {"it waits in the browser", at(signingIn), waits, waiting(300s), countDown},
    {"a second less", waiting(300s), {On::signInSecondPassed}, waiting(299s), countDown},
    {"nothing to count", at(signedOut), {On::signInSecondPassed}, at(signedOut), {}},
    {"no browser", waiting(9s), {On::browserMissing}, waiting(9s, true), {}},
    {"a wait in vain", waiting(9s), {On::signInFailed, "délai"}, with(at(signedOut), "délai"), {}},
    {"left, and no password to see what is there", waiting(9s), {On::signInLeft}, asked, leave},
    {"what was left is silent", at(signedOut), {On::signInFailed, "?"}, at(signedOut), {}},
    {"does not wait", at(signedOut), waits, at(signedOut), {}},
    {"and is undone where it was done a moment before", off, {On::signedIn}, off, signOut},
    {"a look without mirroring", {}, {On::started}, asked, look},
    {"a client file", with(at(signedOut), "absent"), {On::clientChosen}, at(signedOut), {}},
    {"signed out", with(off, "hors ligne"), {On::signedOut}, with(at(signedOut), "hors ligne"), {}},
    {"a token that stays", off, {On::signOutFailed, "verrouillé"}, with(off, "verrouillé"), {}},

    {"on only if remembered", off, {On::switchFailed, "plein", unknown, true}, with(off, "plein"), after(0s)},
    {"off in any case", ready, {On::switchFailed, "plein"}, with(off, "plein"), after(0s)},
};

TEST(MirrorPlan, IsWhatBecomesOfTheMirrorAndWhatThereIsToDo) {
    for (const auto& row : rows) {
        const auto plan = planMirror(row.state, row.event);
        auto then = row.then;
        then.due = std::ranges::find(row.actions, Do::syncAfter, &MirrorAction::kind) != row.actions.end();
        EXPECT_TRUE(plan.state == then) << row.what << ": " << plan.state.status.value_or("no status");
        EXPECT_TRUE(plan.actions == row.actions) << row.what;
    }
}

// The mirror with everything around it that an order of events can bring about.
struct World {
    MirrorState mirror{.on = true, .connection = signedIn};
    enum class Run { none, waiting, sending } run = Run::none;
    bool stopped = false, signingOut = false, signingIn = false, saidNo = false, hasCalendar = false;
    int list = 1, sent = 0, calendar = 0, created = 0; // the last edit that is in each; calendars that were made
    RenamedKeys renamed;
    RenamedKeys::Map sentRenamed;
    std::string key = "0", sentKey, shown; // of the one task: in the list, as sent, in the calendar
    std::string history;

    auto kind() const {
        const auto& m = mirror;
        const auto& keys = renamed.sinceSync();
        return std::tuple(m.connection, m.retries, run, keys.size(), list - sent, list - calendar, created, m.on,
                          m.leaving, m.running, m.stopping, m.again, m.due, m.status.has_value(), stopped, signingOut,
                          signingIn, saidNo, hasCalendar, key == shown, key == sentKey, shown == sentKey,
                          keys.contains(shown), keys.contains(sentKey));
    }

    void tell(const MirrorEvent& event) {
        const auto plan = planMirror(mirror, event);
        mirror = plan.state;
        for (const auto& action : plan.actions) perform(action);
    }

    void perform(const MirrorAction& action) {
        switch (action.kind) {
        case Do::takeTurn:
            EXPECT_TRUE(run == Run::none) << "two runs:" << history;
            run = Run::waiting;
            stopped = false;
            return;
        case Do::send:
            EXPECT_TRUE(run == Run::waiting && !saidNo) << "sends after no:" << history;
            run = Run::sending;
            sent = list;
            sentKey = key;
            sentRenamed = renamed.sinceSync();
            return;
        case Do::stopRun: stopped = true; return;
        case Do::signOut: signingOut = true; return;
        case Do::signIn: signingIn = true; return;
        case Do::storeSwitch: return tell({.kind = On::switched, .on = action.on});
        case Do::stopSignIn: signingIn = false; return;
        case Do::askAccount:
        case Do::countDown:
        case Do::syncAfter: return;
        }
    }

    void request() { // one more of the run
        EXPECT_FALSE(saidNo) << "a request after no:" << history;
        created += !std::exchange(hasCalendar, true);
        const auto carried = sentRenamed.find(shown);
        EXPECT_TRUE(shown.empty() || sentKey == (carried == sentRenamed.end() ? shown : carried->second))
            << "an event loses its task:" << history;
        shown = sentKey;
    }

    void succeed() {
        request();
        calendar = sent;
        renamed.synced(sentRenamed);
        end({.kind = On::runEnded});
    }

    void takeTurn() {
        const bool late = stopped;
        tell({On::turnCame});
        if (late || run == Run::waiting) run = Run::none;
    }

    void rename() {
        const auto before = std::exchange(key, std::to_string(++list));
        renamed.remember({{before, key}});
    }

    void end(MirrorEvent event) {
        run = Run::none;
        event.listChanged = sent != list;
        tell(event);
    }

    bool isOwed() const { // the edit is on its way, or something that was said keeps it from going
        return mirror.due || run != Run::none || mirror.status || saidNo || mirror.connection != signedIn;
    }
};

bool always(const World&) { return true; }
bool sends(const World& w) { return w.run == World::Run::sending; }
bool goesOn(const World& w) { return sends(w) && !w.stopped; }
auto tells(MirrorEvent event) {
    return [event](World& w) { w.tell(event); };
}
auto ends(MirrorEvent event) {
    return [event](World& w) { w.end(event); };
}
auto says(bool no, MirrorEvent event) {
    return [no, event](World& w) { w.saidNo = no || w.signingOut, w.tell(event); };
}

const struct {
    const char* name;
    std::function<bool(const World&)> possible;
    std::function<void(World&)> happen;
} happenings[] = {
    {"edit", always, [](World& w) { ++w.list, w.tell({On::edited}); }},
    {"rename", always, [](World& w) { w.rename(), w.tell({On::edited}); }},
    {"editor", sends, [](World& w) { ++w.list, w.tell({On::listRead}); }},
    {"tick", always, tells({On::periodPassed})},
    {"wake", always, tells({On::wokeUp})},
    {"network", always, tells({On::networkBack})},
    {"due", [](const World& w) { return w.mirror.due; }, tells({On::syncDue})},
    {"off", always, says(true, {On::switchAsked})},
    {"on", always, says(false, {.kind = On::switchAsked, .on = true})},
    {"sign out", [](const World& w) { return w.mirror.connection == signedIn; }, says(true, {On::signOutAsked})},
    {"signed out", [](const World& w) { return w.signingOut; },
     [](World& w) { w.signingOut = false, w.tell({On::signedOut}); }},
    {"sign in", [](const World& w) { return w.mirror.connection == signedOut; }, tells({On::signInAsked})},
    {"signed in", [](const World& w) { return w.signingIn; },
     [](World& w) { w.signingIn = w.saidNo = false, w.tell({On::signedIn}); }},
    {"turn", [](const World& w) { return w.run == World::Run::waiting; }, [](World& w) { w.takeTurn(); }},
    {"request", goesOn, [](World& w) { w.request(); }},
    {"success", goesOn, [](World& w) { w.succeed(); }},
    {"stopped", [](const World& w) { return w.run != World::Run::none && w.stopped; },
     ends({On::runFailed, "interrompue"})},
    {"offline", [](const World& w) { return w.run != World::Run::none; },
     ends({.kind = On::runFailed, .message = "hors ligne", .passing = true})},
    {"refused", sends, ends({On::runFailed, "refusé"})},
    {"no account", sends, ends({On::runFailed, "Non connecté", signedOut})},
};

TEST(MirrorPlan, KeepsItsWordInEveryOrderOfEvents) {
    World idle, sending;
    idle.tell({On::edited});
    sending.tell({On::syncDue});
    sending.tell({On::turnCame});
    std::vector<World> reached{idle, sending};
    std::set<decltype(idle.kind())> seen; // worlds that are alike go on alike
    for (int depth = 0; depth < 6; ++depth) {
        for (const auto& before : std::exchange(reached, {})) {
            for (const auto& [name, possible, happen] : happenings) {
                if (!possible(before)) continue;
                World world = before;
                world.history += std::string(" ") + name;
                happen(world);
                EXPECT_TRUE(world.list == world.calendar || world.isOwed()) << "an edit is forgotten:" << world.history;
                EXPECT_LE(world.created, 1) << world.history;
                if (seen.insert(world.kind()).second) reached.push_back(std::move(world));
            }
        }
    }
    EXPECT_GT(seen.size(), 1000U);
}

}
}
