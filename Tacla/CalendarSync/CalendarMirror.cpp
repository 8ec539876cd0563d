#include "Tacla/CalendarSync/CalendarMirror.h"

#include "DravelKit/Foundation/FileError.h"
#include "Tacla/TaskDocument/TaskDocument.h"

#include <exception>
#include <utility>
#include <variant>

namespace tacla {

namespace {

using namespace std::chrono_literals;
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
        start([service = service_, ask = action.on](std::stop_token stop) { return service->account(ask, stop); },
              Kind::accountTold, Kind::accountFailed, life_);
        return false;
    case MirrorAction::Kind::signIn: signIn(); return false;
    case MirrorAction::Kind::countDown:
        second_ = loop_.after(1s, [this] { finish({.kind = Kind::signInSecondPassed}); });
        return false;
    case MirrorAction::Kind::stopSignIn: signIn_->stop.request_stop(); return false;
    case MirrorAction::Kind::signOut:
        start([service = service_](std::stop_token stop) { return service->signOut(stop), Connection::signedOut; },
              Kind::signedOut, Kind::signOutFailed, life_);
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
        Kind::runEnded, Kind::runFailed, life_);
}

void CalendarMirror::signIn() {
    auto& attempt = signIn_.emplace();
    const auto hear = attempt.life.guard([this](const MirrorEvent& event) { finish(event); });
    const auto tell = [&loop = loop_, hear](const MirrorEvent& event) { loop.post([hear, event] { hear(event); }); };
    start(
        [service = service_, tell, left = attempt.stop](std::stop_token quit) {
            const std::stop_callback quitting(quit, [left]() mutable { left.request_stop(); });
            service->signIn(tell, left.get_token());
            return Connection::signedIn;
        },
        Kind::signedIn, Kind::signInFailed, attempt.life);
}

void CalendarMirror::start(Job job, Kind done, Kind failed, const dravel::Lifetime& life) {
    background_.run<Connection>(std::move(job), life.guard([this, done, failed](const Outcome<Connection>& outcome) {
        auto event = outcomeOf(outcome, done, failed);
        if (event.kind == Kind::runEnded) renamed_.synced(std::exchange(sent_, {}));
        finish(std::move(event));
    }));
}

}
