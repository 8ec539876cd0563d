#include "Tacla/AppModel/AppModel.h"

#include "DravelKit/Foundation/WallCalendar.h"
#include "Tacla/TaskList/TaskFile.h"

#include <utility>

namespace tacla {

using namespace std::chrono_literals;
using Happened = MirrorEvent::Kind;
using dravel::FileError;

AppModel::AppModel(Ports ports, std::filesystem::path file, bool passive)
    : ports_(std::move(ports)), list_(
                                    ports_.loop, ports_.disk, ports_.folders, std::move(file),
                                    [this](auto news) { hear(std::move(news)); }, [this] { tell(); }),
      mirror_(ports_.loop, ports_.background, ports_.preferences, ports_.calendar, state_.tasks, renamed_,
              [this] { tell(); }),
      permission_(ports_.loop, ports_.notifications, [this] { tell(); }),
      login_(
          ports_.loginItem, ports_.preferences, [this](const auto& message) { report(message); }, [this] { tell(); }) {
    state_.today = today();
    state_.now = now();
    tell(); // nobody listens yet
    if (passive || ports_.notifications == nullptr) return;
    reminders_.emplace(ports_.loop, *ports_.notifications, ports_.preferences, ports_.folders.locks / "bubbles",
                       [this](const FileError& error) { report(sentence(impossibleToWrite(error))); });
    answered_ = reminders_->answered.connect([this](const auto& response) { respond(response); });
}

void AppModel::start() {
    dravel::wall::refreshZone(); // the zone of today; the poll notices another one
    list_.begin([this] {
        if (reminders_) reminders_->adopt(state_.file, state_.tasks);
    });
    list_.pruneCopies();
    poll_.emplace(ports_.loop, 2s, [this] { checkFile(); });
    periodic_.emplace(ports_.loop, 600s, [this] { mirror_.tell(Happened::periodPassed); });
    mirror_.tell(Happened::started);
    permission_.refreshWhenServersComeAndGo();
}

void AppModel::end() {
    list_.finishSaving();
    if (reminders_) reminders_->closeAll();
}

void AppModel::tell() {
    const auto& document = list_.state();
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
    state_.launchAtLogin = login_.isOn();
    changed();
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
    if (news.written) mirror_.tell(Happened::edited);
    if (news.opened) mirror_.tell(Happened::listChosen);
    // An editor's change waits for the periodic sync: it is often one of several.
    if (news.savedWhileRead) mirror_.tell(Happened::savedWhileRead);
}

void AppModel::openedOther() {
    const auto& file = list_.state().file;
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
    if (!list_.check(inAnyCase) && inAnyCase) hear({}); // the disk is slow, the day is not
    if (newDay) list_.pruneCopies();
}

void AppModel::wokeUp() {
    list_.read();
    mirror_.tell(Happened::wokeUp);
}

void AppModel::store(const std::function<void()>& preference) try { preference(); } catch (const FileError& error) {
    report(sentence(impossibleToWrite(error)));
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
    list_.readIfChanged([this, response] { act(response); }); // what was edited elsewhere a moment ago counts
}

void AppModel::act(const NotificationServer::Response& response) {
    using Action = NotificationServer::Action;
    const auto task = reminders_->take(response.bubble);
    if (response.action == Action::opened) return openOnToday(response);
    if (task.hasEnded()) return explain(task, response);
    const auto edit = response.action == Action::done
                          ? UserEdit::setDone(*task.now, true, today())
                          : UserEdit::reschedule(*task.now, today().plusDays(1), task.now->time, today());
    list_.apply(edit, [this, task, response](auto outcome) {
        if (outcome == LiveDocument::Outcome::failed) reminders_->ringAgain(*task.now);
        if (outcome != LiveDocument::Outcome::saved) explain(task, response);
    });
}

void AppModel::explain(const RungTask& task, const NotificationServer::Response& response) {
    if (!state_.fileError) list_.show(UndoBar{outlived(task), false});
    openOnToday(response);
}

void AppModel::openOnToday(const NotificationServer::Response& response) {
    requestSection("today");
    windowAsked(response.activationToken);
}

void AppModel::finishOnboarding() {
    store([&] { ports_.preferences.setOnboardingDone(true); });
    set(state_.onboarding, false);
}

}
