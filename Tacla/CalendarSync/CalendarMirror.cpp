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

MirrorEvent done(Kind kind, Connection account) { return {.kind = kind, .account = account}; }
MirrorEvent done(Kind kind, const std::string& hint) { return {.kind = kind, .hint = hint}; }

MirrorEvent failed(Kind kind, const std::exception_ptr& thrown) {
    try {
        std::rethrow_exception(thrown);
    } catch (const CalendarService::NotSignedIn& error) {
        return {.kind = kind, .message = error.what(), .account = Connection::signedOut, .hint = error.hint};
    } catch (const CalendarService::Failure& error) {
        return {.kind = kind, .message = error.what(), .hint = error.hint, .passing = error.passing};
    } catch (const std::exception& error) {
        return {.kind = kind, .message = error.what()};
    }
}

// Without what nobody sees.
MirrorState published(MirrorState state) {
    state.asking = state.leaving = state.stopping = state.again = state.due = false;
    state.retries = 0;
    return state;
}

template <class Result>
MirrorEvent eventOf(const Outcome<Result>& outcome, Kind whenDone, Kind whenFailed) {
    const auto* thrown = std::get_if<std::exception_ptr>(&outcome);
    return thrown == nullptr ? done(whenDone, std::get<Result>(outcome)) : failed(whenFailed, *thrown);
}

}

CalendarMirror::CalendarMirror(dravel::MainLoop& loop, dravel::Background& background, Preferences& preferences,
                               CalendarService* service, const TaskList& tasks, RenamedKeys& renamed,
                               std::function<void()> changed)
    : loop_(loop), background_(background), preferences_(preferences), service_(service), tasks_(tasks),
      renamed_(renamed), changed_(std::move(changed)) {
    state_.available = service != nullptr;
    state_.on = preferences.calendarSync();
}

bool CalendarMirror::handle(const MirrorEvent& event) {
    auto plan = planMirror(state_, event);
    bool different = published(plan.state) != published(state_);
    state_ = std::move(plan.state);
    for (const auto& action : plan.actions) different |= perform(action);
    return different;
}

void CalendarMirror::tell(MirrorEvent event) {
    event.at = loop_.now();
    if (handle(event)) changed_();
}

void CalendarMirror::useClient(const std::filesystem::path& downloaded) {
    if (service_ == nullptr) return;
    try {
        service_->useClient(downloaded);
        handle({Kind::clientChosen});
    } catch (const std::exception& error) {
        handle({Kind::reported, error.what()});
    }
    changed_();
}

bool CalendarMirror::perform(const MirrorAction& action) {
    switch (action.kind) {
    case MirrorAction::Kind::askAccount:
        start<Connection>(
            [service = service_, ask = action.on](const std::stop_token& stop) { return service->account(ask, stop); },
            Kind::accountTold, Kind::accountFailed, life_);
        return false;
    case MirrorAction::Kind::signIn: signIn(); return false;
    case MirrorAction::Kind::countDown:
        second_ = loop_.after(1s, [this] { tell(Kind::signInSecondPassed); });
        return false;
    case MirrorAction::Kind::stopSignIn: signIn_->stop.request_stop(); return false;
    case MirrorAction::Kind::signOut:
        start<Connection>(
            [service = service_](const std::stop_token& stop) { return service->signOut(stop), Connection::signedOut; },
            Kind::signedOut, Kind::signOutFailed, life_);
        return false;
    case MirrorAction::Kind::takeTurn: takeTurn(); return false;
    case MirrorAction::Kind::send: send(); return false;
    case MirrorAction::Kind::stopRun: stop_.request_stop(); return false;
    case MirrorAction::Kind::storeSwitch: return store(action.on);
    case MirrorAction::Kind::syncAfter:
        nextSync_ = loop_.after(action.delay, [this] { tell(Kind::syncDue); });
        return false;
    }
    return false;
}

bool CalendarMirror::store(bool on) {
    try {
        preferences_.setCalendarSync(on);
        return handle({.kind = Kind::switched, .on = on});
    } catch (const dravel::FileError& error) {
        handle({.kind = Kind::switchFailed, .message = sentence(impossibleToWrite(error)), .on = on});
        return true; // also when it says so for the second time: the switch shows what could not be stored
    }
}

void CalendarMirror::takeTurn() {
    stop_ = std::stop_source();
    const auto waits = life_.guard([this] { tell(Kind::runWaits); });
    startStoppable<Turn>(
        [service = service_, &loop = loop_, waits](const std::stop_token& stop) {
            return service->takeTurn(stop, [&loop, waits] { loop.post(waits); });
        },
        [this](const Outcome<Turn>& outcome) {
            const auto* thrown = std::get_if<std::exception_ptr>(&outcome);
            if (thrown != nullptr) return tell(failed(Kind::runFailed, *thrown));
            turn_ = std::get<Turn>(outcome);
            tell(Kind::turnCame);
            turn_.reset();
        });
}

void CalendarMirror::send() {
    sent_ = renamed_.sinceSync();
    sentTasks_ = tasks_;
    startStoppable<std::string>(
        [service = service_, turn = turn_, tasks = tasks_, renamed = sent_](const std::stop_token& stop) mutable {
            const auto held = std::exchange(turn, {}); // given up with the end of the run, whoever keeps this job
            return service->run(held, Tasks(tasks.begin(), tasks.end()), renamed, stop);
        },
        [this](const Outcome<std::string>& outcome) {
            auto event = eventOf(outcome, Kind::runEnded, Kind::runFailed);
            event.listChanged = !(std::exchange(sentTasks_, {}) == tasks_);
            if (event.kind == Kind::runEnded) renamed_.synced(std::exchange(sent_, {}));
            tell(std::move(event));
        });
}

void CalendarMirror::signIn() {
    auto& attempt = signIn_.emplace();
    const auto hear = attempt.life.guard([this](const MirrorEvent& event) { tell(event); });
    const auto told = [&loop = loop_, hear](const MirrorEvent& event) { loop.post([hear, event] { hear(event); }); };
    start<Connection>(
        [service = service_, told, left = attempt.stop](const std::stop_token& quit) {
            const std::stop_callback quitting(quit, [left]() mutable { left.request_stop(); });
            service->signIn(told, left.get_token());
            return Connection::signedIn;
        },
        Kind::signedIn, Kind::signInFailed, attempt.life);
}

template <class Result, class Job>
void CalendarMirror::start(Job job, Kind whenDone, Kind whenFailed, const dravel::Lifetime& life) {
    background_.run<Result>(std::move(job), life.guard([this, whenDone, whenFailed](const Outcome<Result>& outcome) {
        tell(eventOf(outcome, whenDone, whenFailed));
    }));
}

// A job that ends when the run is stopped, as well as when the program quits.
template <class Result, class Job>
void CalendarMirror::startStoppable(Job job, std::function<void(const Outcome<Result>&)> whenOver) {
    background_.run<Result>(
        [job = std::move(job), run = stop_](const std::stop_token& quit) mutable {
            const std::stop_callback onQuit(quit, [&run] { run.request_stop(); });
            return job(run.get_token());
        },
        life_.guard(std::move(whenOver)));
}

}
