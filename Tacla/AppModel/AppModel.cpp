#include "Tacla/AppModel/AppModel.h"

#include "DravelKit/Foundation/WallCalendar.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>
#include <utility>

namespace tacla {

using namespace std::chrono_literals;
using Happened = MirrorEvent::Kind;
using dravel::FileError;
using std::filesystem::path;

AppModel::AppModel(Ports ports, path file, bool passive)
    : ports_(std::move(ports)), document_(
                                    ports_.loop, ports_.disk, ports_.folders, std::move(file),
                                    [this](auto news) { hear(std::move(news)); }, [this] { tell(); }),
      mirror_(ports_.loop, ports_.background, ports_.preferences, ports_.calendar, state_.tasks, renamed_,
              [this] { tell(); }),
      permission_(ports_.loop, ports_.notifications, [this] { tell(); }),
      launchAtLogin_(ports_.loginItem, ports_.preferences, [this](const std::string& message) {
          mirror_.handle({Happened::reported, message});
      }) {
    state_.today = today();
    state_.now = now();
    state_.file = document_.state().file;
    state_.calendarSync = mirror_.state().on;
    state_.launchAtLogin = launchAtLogin_.isOn();
    if (passive || ports_.notifications == nullptr) return;
    reminders_.emplace(ports_.loop, *ports_.notifications, ports_.preferences, ports_.folders.locks / "bubbles",
                       [this](const FileError& error) { report(sentence(impossibleToWrite(error))); });
    answered_ = reminders_->answered.connect([this](const auto& response) { respond(response); });
}

void AppModel::start() {
    dravel::wall::refreshZone(); // the zone of today; the poll notices another one
    document_.begin([this] {
        if (reminders_) reminders_->adopt(state_.file, state_.tasks);
    });
    document_.pruneCopies();
    poll_.emplace(ports_.loop, 2s, [this] { checkFile(); });
    periodic_.emplace(ports_.loop, 600s, [this] { tellOf(Happened::periodPassed); });
    tellOf(Happened::started);
    permission_.refreshWhenServersComeAndGo();
}

void AppModel::end() {
    document_.finishSaving();
    if (reminders_) reminders_->closeAll();
}

void AppModel::tell() {
    const auto& document = document_.state();
    state_.file = document.file;
    state_.unreadDates = document.unreadDates;
    state_.fileError = document.fileError;
    state_.undoBar = document.undoBar;
    const auto& mirror = mirror_.state();
    state_.connection = mirror.connection;
    state_.signIn = mirror.signIn;
    if (ports_.calendar != nullptr && mirror.connection != Connection::signedIn)
        state_.googleClient = ports_.calendar->client();
    state_.lastSync = mirror.lastSync;
    state_.syncing = mirror.running;
    state_.syncError = mirror.status;
    state_.syncHint = mirror.syncHint;
    state_.calendarSync = mirror.on;
    state_.notificationsAllowed = permission_.allowed;
    state_.notificationTest = permission_.testResult;
    state_.launchAtLogin = launchAtLogin_.isOn();
    changed();
}

void AppModel::tellOf(Happened what) {
    if (mirror_.handle({what})) tell();
}

void AppModel::hear(LiveDocument::News news) {
    state_.today = today();
    state_.now = now();
    renamed_.remember(news.renamed);
    if (news.opened) openedOther();
    if (news.tasks) {
        if (reminders_ && !std::exchange(isOtherList_, false) && news.successors) reminders_->follow(*news.successors);
        state_.tasks = std::move(*news.tasks);
    }
    if (news.failure)
        mirror_.handle({Happened::listUnreadable});
    else if (news.tasks)
        mirror_.handle({Happened::listRead});
    if (reminders_) {
        for (const auto& task : news.silenced) reminders_->skipIfPast(task, state_.now);
        reminders_->reconcile(state_.tasks, state_.now);
    }
    tell();
    if (news.written) tellOf(Happened::edited);
    if (news.opened) tellOf(Happened::listChosen);
    // An editor's change waits for the periodic sync: it is often one of several.
    if (news.savedWhileRead) tellOf(Happened::savedWhileRead);
}

void AppModel::openedOther() {
    const auto& file = document_.state().file;
    store([&] { ports_.preferences.setTaskFilePath(file.string()); });
    if (!reminders_ || file == state_.file) return;
    reminders_->follow(Successors(state_.tasks, {})); // each list has its own
    reminders_->adopt(file, {});
    isOtherList_ = true;
}

void AppModel::checkFile() {
    ports_.preferences.check();
    const bool newZone = dravel::wall::refreshZone();
    const auto moment = now();
    const bool newDay = Day::of(moment) != state_.today;
    const bool setBack = moment < state_.now; // what has rung is to come once more
    const bool inAnyCase = newZone || setBack || newDay;
    if (!inAnyCase && Clock::of(moment) != Clock::of(state_.now)) {
        state_.now = moment;
        if (reminders_) reminders_->minutePassed(state_.tasks, moment);
        tell();
    }
    if (!document_.check(inAnyCase) && inAnyCase) hear({}); // the disk is slow, the day is not
    if (newDay) document_.pruneCopies();
}

void AppModel::wokeUp() {
    reload();
    tellOf(Happened::wokeUp);
}

void AppModel::report(const std::string& message) {
    mirror_.handle({Happened::reported, message});
    tell();
}

void AppModel::store(const std::function<void()>& preference) try { preference(); } catch (const FileError& error) {
    mirror_.handle({Happened::reported, sentence(impossibleToWrite(error))});
}

bool AppModel::holds(const TaskItem& seen) const {
    const auto place = state_.tasks.find(seen.key);
    return place && isStill(seen, state_.tasks.drawn(*place));
}

TaskItem AppModel::whole(const TaskItem& drawn) const {
    const auto place = drawn.title.size() > longestDrawn ? state_.tasks.find(drawn.key) : std::nullopt;
    return place ? state_.tasks[*place] : drawn;
}

void AppModel::edit(const TaskItem& task, const TaskChange& change, std::function<void(Outcome)> done) {
    document_.apply(UserEdit::change(task, change, today()), [this, task, done = std::move(done)](auto outcome) {
        if (!done) return;
        switch (outcome) {
        case LiveDocument::Outcome::saved: return done(Outcome::saved);
        case LiveDocument::Outcome::failed: return done(Outcome::failed);
        case LiveDocument::Outcome::unchanged: return done(holds(task) ? Outcome::unchanged : Outcome::gone);
        }
    });
}

void AppModel::add(const std::string& title, std::optional<Day> day, std::optional<Clock> time, bool strong,
                   const Added& added) {
    const auto on = day.value_or(today());
    write(UserEdit::add(title, on, time, strong, on == today() ? "Tâche ajoutée" : "Ajoutée pour " + on.longLabel()),
          added);
}

void AppModel::write(const std::optional<UserEdit>& edit, const Added& added) {
    if (!edit && added) added("Ce titre ne peut pas être écrit.");
    if (!edit) return;
    document_.apply(*edit, [this, added](auto outcome) {
        if (added) added(outcome == LiveDocument::Outcome::failed ? state_.fileError : std::nullopt);
    });
}

namespace {

std::string naming(const TaskItem& task) { return "La tâche « " + TaskFile::dropStrongMark(task.title) + " »"; }

// Why a button of a reminder does nothing any more.
std::string outlived(const RungTask& task) {
    if (!task.now) return naming(task.shown) + " n'est plus dans la liste.";
    return naming(*task.now) + (task.now->done ? " est déjà cochée." : " a changé entre-temps.");
}

}

void AppModel::respond(const NotificationServer::Response& response) {
    document_.readIfChanged([this, response] { act(response); }); // what was edited elsewhere a moment ago counts
}

void AppModel::act(const NotificationServer::Response& response) {
    using Action = NotificationServer::Action;
    const auto task = reminders_->take(response.bubble);
    if (response.action == Action::opened) return openOnToday(response);
    if (task.hasEnded()) return explain(task, response);
    const auto edit = response.action == Action::done
                          ? UserEdit::setDone(*task.now, true, today())
                          : UserEdit::reschedule(*task.now, today().plusDays(1), task.now->time, today());
    document_.apply(edit, [this, task, response](auto outcome) {
        if (outcome == LiveDocument::Outcome::failed) reminders_->ringAgain(*task.now);
        if (outcome != LiveDocument::Outcome::saved) explain(task, response);
    });
}

void AppModel::explain(const RungTask& task, const NotificationServer::Response& response) {
    if (!state_.fileError) document_.show(UndoBar{outlived(task), false});
    openOnToday(response);
}

void AppModel::openOnToday(const NotificationServer::Response& response) {
    requestSection("today");
    windowAsked(response.activationToken);
}

void AppModel::setCalendarSync(bool on) {
    mirror_.handle({.kind = Happened::switchAsked, .on = on});
    tell(); // in any case: the switch may show what could not be stored
}

void AppModel::enableCalendarSync() {
    mirror_.handle({Happened::enableAsked});
    tell();
}

void AppModel::useGoogleClient(const path& downloaded) {
    if (ports_.calendar == nullptr) return;
    std::optional<std::string> failure;
    try {
        ports_.calendar->useClient(downloaded);
    } catch (const std::exception& error) {
        failure = error.what();
    }
    mirror_.handle({failure ? Happened::reported : Happened::clientChosen, failure.value_or("")});
    tell();
}

void AppModel::finishOnboarding() {
    store([&] { ports_.preferences.setOnboardingDone(true); });
    set(state_.onboarding, false);
}

}
