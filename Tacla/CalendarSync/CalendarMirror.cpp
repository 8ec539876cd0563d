#include "Tacla/AppModel/AppModel.h"
#include "Tacla/AppModel/AppModelInside.h"

#include <exception>
#include <variant>

namespace tacla {

namespace {

using namespace std::chrono_literals;
using Account = CalendarService::Account;
using dravel::Nothing;
using dravel::Outcome;

constexpr auto keyringSilent = "Pas connecté à Google : le trousseau de clés est verrouillé ou ne répond pas";

struct Failure {
    std::string description;
    bool notSignedIn = false;
};

template <class Result>
std::optional<Failure> failureOf(const Outcome<Result>& outcome) {
    const auto* thrown = std::get_if<std::exception_ptr>(&outcome);
    if (thrown == nullptr) return {};
    try {
        std::rethrow_exception(*thrown);
    } catch (const CalendarService::NotSignedIn& error) {
        return Failure{error.what(), true};
    } catch (const std::exception& error) {
        return Failure{error.what()};
    }
}

}

void AppModel::Inside::scheduleSync(std::chrono::milliseconds delay) {
    pendingSync = world.loop.after(delay, [this] { model.sync(); });
}

void AppModel::Inside::everyPeriod() {
    if (state.fileError) model.reload(); // it may be over by now, and no sync runs before
    if (state.connection == Connection::unknown) return askAccount();
    scheduleSync(0s);
}

void AppModel::accountStoreAppeared() {
    if (inside_->state.connection == Connection::unknown) inside_->askAccount();
}

void AppModel::Inside::askAccount() {
    if (world.calendar == nullptr || askingAccount) return;
    askingAccount = true;
    world.background.run<Account>(
        [calendar = world.calendar](std::stop_token stop) { return calendar->account(std::move(stop)); },
        life.guard([this](const Outcome<Account>& outcome) {
            askingAccount = false;
            const auto* account = std::get_if<Account>(&outcome);
            if (state.connection != Connection::unknown) return; // a sign-in was faster
            if (account != nullptr && *account == Account::unreachable) {
                if (state.calendarSync) model.report(keyringSilent);
                return;
            }
            if (state.syncError == keyringSilent) state.syncError.reset();
            const bool signedIn = account != nullptr && *account == Account::signedIn;
            state.connection = signedIn ? Connection::signedIn : Connection::signedOut;
            model.changed();
            scheduleSync(0s);
        }));
}

void AppModel::sync() {
    auto& in = *inside_;
    auto& state = in.state;
    if (state.calendarSync && state.connection == Connection::unknown) return in.askAccount();
    if (in.world.calendar == nullptr || !state.calendarSync || state.connection != Connection::signedIn ||
        state.syncing || state.fileError) {
        return;
    }
    state.syncing = true;
    changed();
    const auto renamed = in.renamed.sinceSync();
    in.world.background.run<Nothing>(
        [calendar = in.world.calendar, tasks = state.tasks, renamed](std::stop_token stop) {
            calendar->run(tasks, renamed, std::move(stop));
            return Nothing{};
        },
        in.life.guard([this, renamed](const Outcome<Nothing>& outcome) {
            auto& after = inside_->state;
            const auto failure = failureOf(outcome);
            if (failure) {
                if (failure->notSignedIn) after.connection = Connection::signedOut;
                after.syncError = failure->description;
            } else {
                inside_->renamed.synced(renamed);
                after.lastSync = inside_->now();
                after.syncError.reset();
            }
            after.syncing = false;
            changed();
        }));
}

void AppModel::signIn() {
    auto& in = *inside_;
    if (in.world.calendar == nullptr || in.state.connection == Connection::signingIn) return;
    in.state.connection = Connection::signingIn;
    changed();
    in.world.background.run<Nothing>(
        [calendar = in.world.calendar](std::stop_token stop) {
            calendar->signIn(std::move(stop));
            return Nothing{};
        },
        in.life.guard([this](const Outcome<Nothing>& outcome) {
            auto& inside = *inside_;
            if (const auto failure = failureOf(outcome)) {
                inside.state.connection = Connection::signedOut;
                inside.state.syncError = failure->description;
            } else {
                inside.state.connection = Connection::signedIn;
                inside.state.syncError.reset();
                inside.mirror(true);
                inside.scheduleSync(0s);
            }
            changed();
        }));
}

void AppModel::signOut() {
    auto& in = *inside_;
    if (in.world.calendar == nullptr) return;
    in.world.background.run<Nothing>(
        [calendar = in.world.calendar](std::stop_token stop) {
            calendar->signOut(std::move(stop));
            return Nothing{};
        },
        in.life.guard([this](const Outcome<Nothing>& outcome) {
            auto& state = inside_->state;
            const auto failure = failureOf(outcome);
            // A token that could not be forgotten is still there: saying otherwise would be wrong.
            if (failure)
                state.syncError = failure->description;
            else
                state.connection = Connection::signedOut;
            changed();
        }));
}

void AppModel::Inside::mirror(bool on) {
    const bool stored = store([&] { world.preferences.setCalendarSync(on); });
    if (stored || !on) state.calendarSync = on; // off is obeyed even when it cannot be remembered
}

void AppModel::setCalendarSync(bool on) {
    inside_->mirror(on);
    changed();
    inside_->scheduleSync(0s);
}

void AppModel::enableCalendarSync() {
    inside_->state.syncError.reset();
    setCalendarSync(true);
}

}
