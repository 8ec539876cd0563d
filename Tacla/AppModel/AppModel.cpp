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

// What could not be written is said long enough to be read, whether or not the list can be, and why not.
static constexpr auto shownAtLeast = 6s;

static constexpr std::string_view toRead = "de lire";

AppModel::AppModel(Ports ports, path file, bool passive)
    : ports_(std::move(ports)), document_(std::move(file), ports_.folders),
      mirror_(ports_.loop, ports_.background, ports_.preferences, ports_.calendar, state_.tasks, document_.renamed(),
              [this] { tell(); }),
      permission_(ports_.loop, ports_.notifications, [this] { tell(); }) {
    state_.today = today();
    state_.now = now();
    state_.file = document_.file();
    state_.calendarSync = mirror_.state().on;
    state_.launchAtLogin = ports_.loginItem != nullptr && ports_.loginItem->isEnabled();
    if (passive || ports_.notifications == nullptr) return;
    reminders_.emplace(ports_.loop, *ports_.notifications, ports_.preferences, ports_.folders.locks / "bubbles",
                       [this](const FileError& error) { report(sentence(impossibleToWrite(error))); });
    answered_ = reminders_->answered.connect([this](const auto& response) { respond(response); });
}

void AppModel::start() {
    dravel::wall::refreshZone(); // the zone of today; the poll notices another one
    if (document_.file() == documentsTaskFile(ports_.folders)) create(document_.file());
    reload();
    if (reminders_) reminders_->adopt(document_.file(), state_.tasks);
    document_.pruneCopies(now());
    poll_.emplace(ports_.loop, 2s, [this] { checkFile(); });
    periodic_.emplace(ports_.loop, 600s, [this] { tellOf(Happened::periodPassed); });
    tellOf(Happened::started);
    permission_.refreshWhenServersComeAndGo();
}

void AppModel::end() {
    if (reminders_) reminders_->closeAll();
}

void AppModel::tell() {
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
    changed();
}

void AppModel::tellOf(Happened what) {
    if (mirror_.handle({what})) tell();
}

void AppModel::refresh(const Tasks& silenced) {
    state_.today = today();
    state_.now = now();
    attempt(toRead, document_.file(), [this] {
        auto tasks = document_.read();
        if (reminders_ && !std::exchange(isOtherList_, false)) reminders_->follow(state_.tasks, tasks);
        state_.tasks = std::move(tasks);
        state_.unreadDates = document_.unreadDates();
        if (now() >= writeFailureSaid_) state_.fileError.reset();
        mirror_.handle({Happened::listRead});
    });
    if (!reminders_) return;
    for (const auto& task : silenced) reminders_->skipIfPast(task, state_.now);
    reminders_->reconcile(state_.tasks, state_.now);
}

void AppModel::reload() {
    refresh();
    tell();
}

void AppModel::checkFile() {
    ports_.preferences.check();
    const bool newZone = dravel::wall::refreshZone();
    const auto moment = now();
    const auto stamp = document_.onDisk();
    const bool mayBeOver = state_.fileError && moment - failed_ >= shownAtLeast;
    const bool setBack = moment < state_.now; // what has rung is to come once more
    if (!newZone && !setBack && !mayBeOver && Day::of(moment) == state_.today && !document_.isStale(stamp)) {
        if (Clock::of(moment) == Clock::of(state_.now)) return;
        state_.now = moment;
        if (reminders_) reminders_->minutePassed(state_.tasks, moment);
        return tell();
    }
    if (Day::of(moment) != state_.today) document_.pruneCopies(moment);
    reload();
    // They differ only when the file was saved again meanwhile, or could not be read. An editor's change waits for the
    // periodic sync: it is often one of several.
    if (stamp != document_.lastRead()) tellOf(Happened::savedWhileRead);
}

void AppModel::wokeUp() {
    reload();
    tellOf(Happened::wokeUp);
}

void AppModel::report(const std::string& message) {
    mirror_.handle({Happened::reported, message});
    tell();
}

bool AppModel::attempt(std::string_view deed, const path& file, const std::function<void()>& act) try {
    act();
    return true;
} catch (const FileError& error) {
    mirror_.handle({Happened::listUnreadable});
    const auto moment = now();
    if (deed == toRead && moment < writeFailureSaid_) return false;
    state_.fileError = sentence(impossible(deed, file, error));
    failed_ = moment;
    if (deed != toRead) writeFailureSaid_ = moment + shownAtLeast;
    return false;
}

void AppModel::store(const std::function<void()>& preference) try { preference(); } catch (const FileError& error) {
    mirror_.handle({Happened::reported, sentence(impossibleToWrite(error))});
}

AppModel::Outcome AppModel::apply(const UserEdit& edit, const std::function<void()>& saved) {
    std::optional<TaskDocument::Change> change;
    if (!attempt("d'écrire", document_.file(), [&] { change = document_.edit(edit.apply, now()); })) {
        tell();
        return Outcome::failed;
    }
    if (!change) {
        reloadIfStale(); // the task may have become another one: what is shown is not it
        return Outcome::unchanged;
    }
    show(UndoBar{edit.said, true});
    if (saved) saved();
    wrote(edit.retitled ? retitled(*change, *edit.retitled) : Tasks());
    return Outcome::saved;
}

Tasks AppModel::retitled(const TaskDocument::Change& change, std::string key) {
    const auto keys = document_.follow(change);
    if (const auto renamed = keys.find(key); renamed != keys.end()) key = renamed->second;
    const auto task = TaskFile::find(change.after, key);
    return task ? Tasks{*task} : Tasks();
}

bool AppModel::holds(const TaskItem& seen) const {
    return std::ranges::any_of(state_.tasks, [&](const TaskItem& task) { return isStill(seen, task); });
}

AppModel::Outcome AppModel::edit(const TaskItem& task, const TaskChange& change, const std::function<void()>& saved) {
    const auto outcome = apply(UserEdit::change(task, change, today()), saved);
    return outcome == Outcome::unchanged && !holds(task) ? Outcome::gone : outcome;
}

void AppModel::wrote(const Tasks& silenced) {
    writeFailureSaid_ = {};
    refresh(silenced);
    tell();
    tellOf(Happened::edited);
}

void AppModel::show(std::optional<UndoBar> bar) {
    undoBarEnd_ = {};
    state_.undoBar = std::move(bar);
    if (state_.undoBar) undoBarEnd_ = ports_.loop.after(10s, [this] { set(state_.undoBar, {}); });
}

void AppModel::undo() {
    if (!canUndo()) return;
    TaskDocument::Undone undone;
    const auto write = [&] { undone = document_.undo(now()); };
    if (!attempt("d'écrire", document_.file(), write)) return tell(); // may be tried again
    show(undone.changedSince ? std::optional(UndoBar{"Le fichier a changé depuis : rien n'a été annulé.", false})
                             : std::nullopt);
    if (undone.changedSince) return tell();
    wrote(remindersGivenBack(undone.change));
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
    reloadIfStale(); // what was edited elsewhere a moment ago counts
    const auto task = reminders_->take(response.bubble);
    const bool wantsWindow = response.action == NotificationServer::Action::opened;
    if (!wantsWindow && !task.hasEnded() && perform(response.action, *task.now)) return;
    if (!wantsWindow && !state_.fileError) show(UndoBar{outlived(task), false});
    requestSection("today");
    windowAsked(response.activationToken);
}

bool AppModel::perform(NotificationServer::Action action, const TaskItem& task) {
    if (action == NotificationServer::Action::done)
        return apply(UserEdit::setDone(task, true, today())) == Outcome::saved;
    return apply(UserEdit::reschedule(task, today().plusDays(1), task.time, today())) == Outcome::saved;
}

std::optional<std::string> AppModel::add(const std::string& title, std::optional<Day> day, std::optional<Clock> time,
                                         bool strong) {
    const auto on = day.value_or(today());
    return written(
        UserEdit::add(title, on, time, strong, on == today() ? "Tâche ajoutée" : "Ajoutée pour " + on.longLabel()));
}

std::optional<std::string> AppModel::written(const std::optional<UserEdit>& edit) {
    if (!edit) return "Ce titre ne peut pas être écrit.";
    return apply(*edit) == Outcome::failed ? state_.fileError : std::nullopt;
}

void AppModel::bringBack(const path& copy) {
    std::string text;
    if (!attempt(toRead, copy, [&] { text = dravel::SafeFile::readText(copy); })) return tell();
    if (!document_.isStale(document_.onDisk())) {
        apply(UserEdit::bringBack(std::move(text)));
        return;
    }
    show(UndoBar{"Le fichier a changé depuis : rien n'a été rétabli.", false});
    reload(); // what was to be replaced is not what was looked at
}

void AppModel::use(const path& file) {
    store([&] { ports_.preferences.setTaskFilePath(file.string()); });
    if (reminders_ && file != document_.file()) { // each list has its own
        reminders_->follow(state_.tasks, {});
        reminders_->adopt(file, {});
        isOtherList_ = true;
    }
    document_.open(file);
    writeFailureSaid_ = {};
    state_.file = file;
    show({});
    reload();
    tellOf(Happened::listChosen);
}

void AppModel::createAndUse(const path& file) {
    if (create(file)) return use(file);
    tell();
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

void AppModel::applyLaunchAtLogin() {
    if (ports_.loginItem == nullptr || ports_.preferences.wantsLaunchAtLogin() == false) return;
    switch (ports_.loginItem->status()) {
    case LoginItem::Status::enabled: return;
    case LoginItem::Status::switchedOff: // in the desktop's settings: the same choice in another place
        return store([&] { ports_.preferences.setWantsLaunchAtLogin(false); });
    case LoginItem::Status::absent:
    case LoginItem::Status::foreign:
        if (ports_.loginItem->mayComeUnasked()) setLaunchAtLogin(true);
    }
}

void AppModel::setLaunchAtLogin(bool on) {
    if (ports_.loginItem == nullptr) return;
    store([&] { ports_.preferences.setWantsLaunchAtLogin(on); });
    if (auto failure = ports_.loginItem->choose(on)) mirror_.handle({Happened::reported, *failure});
    set(state_.launchAtLogin, ports_.loginItem->isEnabled());
}

void AppModel::finishOnboarding() {
    store([&] { ports_.preferences.setOnboardingDone(true); });
    set(state_.onboarding, false);
}

}
