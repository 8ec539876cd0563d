#include "Tacla/CalendarSync/CalendarMirror.h"

#include "DravelKit/Foundation/FileError.h"
#include "Tacla/TaskDocument/TaskDocument.h"

#include <exception>
#include <utility>
#include <variant>

namespace tacla {

namespace {

using Kind = MirrorEvent::Kind;
using dravel::Outcome;

MirrorEvent outcomeOf(const Outcome<Connection>& outcome, Kind done, Kind failed) {
    const auto* thrown = std::get_if<std::exception_ptr>(&outcome);
    if (thrown == nullptr) return {.kind = done, .account = std::get<Connection>(outcome)};
    try {
        std::rethrow_exception(*thrown);
    } catch (const CalendarService::NotSignedIn& error) {
        return {.kind = failed, .message = error.what(), .account = Connection::signedOut};
    } catch (const std::exception& error) {
        return {.kind = failed, .message = error.what()};
    }
}

}

CalendarMirror::CalendarMirror(dravel::MainLoop& loop, dravel::Background& background, Preferences& preferences,
                               CalendarService* service, const Tasks& tasks, RenamedKeys& renamed,
                               std::function<void()> changed)
    : loop_(loop), background_(background), preferences_(preferences), service_(service), tasks_(tasks),
      renamed_(renamed), changed_(std::move(changed)) {
    state_.available = service != nullptr;
    state_.on = preferences.calendarSync();
}

bool CalendarMirror::handle(const MirrorEvent& event) {
    auto plan = planMirror(state_, event);
    bool different = plan.state != state_;
    state_ = std::move(plan.state);
    for (const auto& action : plan.actions) different |= perform(action);
    return different;
}

void CalendarMirror::finish(MirrorEvent event) {
    event.at = loop_.now();
    if (handle(event)) changed_();
}

bool CalendarMirror::perform(const MirrorAction& action) {
    switch (action.kind) {
    case MirrorAction::Kind::askAccount:
        start([service = service_](std::stop_token stop) { return service->account(std::move(stop)); },
              Kind::accountTold, Kind::accountFailed);
        return false;
    case MirrorAction::Kind::signIn:
        start([service = service_](std::stop_token stop) { return service->signIn(stop), Connection::signedIn; },
              Kind::signedIn, Kind::signInFailed);
        return false;
    case MirrorAction::Kind::signOut:
        start([service = service_](std::stop_token stop) { return service->signOut(stop), Connection::signedOut; },
              Kind::signedOut, Kind::signOutFailed);
        return false;
    case MirrorAction::Kind::run: run(); return false;
    case MirrorAction::Kind::storeSwitch: return store(action.on);
    case MirrorAction::Kind::syncAfter:
        nextSync_ = loop_.after(action.delay, [this] { finish({.kind = Kind::syncDue}); });
        return false;
    }
    return false;
}

bool CalendarMirror::store(bool on) {
    try {
        preferences_.setCalendarSync(on);
        return handle({.kind = Kind::switched, .on = on});
    } catch (const dravel::FileError& error) {
        return handle({.kind = Kind::switchFailed, .message = sentence(impossibleToWrite(error)), .on = on});
    }
}

void CalendarMirror::run() {
    sent_ = renamed_.sinceSync();
    start(
        [service = service_, tasks = tasks_, renamed = sent_](std::stop_token stop) {
            service->run(tasks, renamed, std::move(stop));
            return Connection::signedIn;
        },
        Kind::runEnded, Kind::runFailed);
}

void CalendarMirror::start(Job job, Kind done, Kind failed) {
    background_.run<Connection>(std::move(job), life_.guard([this, done, failed](const Outcome<Connection>& outcome) {
        auto event = outcomeOf(outcome, done, failed);
        if (event.kind == Kind::runEnded) renamed_.synced(std::exchange(sent_, {}));
        finish(std::move(event));
    }));
}

}
