#include "Tacla/AppModel/AppModel.h"

#include "DravelKit/Foundation/WallCalendar.h"

#include <algorithm>
#include <utility>

namespace tacla {

using namespace std::chrono_literals;
using Happened = MirrorEvent::Kind;
using dravel::FileError;
using std::filesystem::path;

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
    reminders_.emplace(ports_.loop, *ports_.notifications, ports_.preferences,
                       [this](const FileError& error) { report(sentence(impossibleToWrite(error))); });
}

void AppModel::start() {
    dravel::wall::refreshZone(); // the zone of today; the poll notices another one
    if (document_.file() == documentsTaskFile(ports_.folders)) create(document_.file());
    reload();
    document_.pruneCopies(now());
    poll_.emplace(ports_.loop, 2s, [this] { checkFile(); });
    periodic_.emplace(ports_.loop, 600s, [this] {
        if (state_.fileError) reload(); // it may be over by now, and no sync runs before
        tellOf(Happened::periodPassed);
    });
    tellOf(Happened::started);
    permission_.refreshWhenServersComeAndGo();
}

void AppModel::tell() {
    const auto& mirror = mirror_.state();
    state_.connection = mirror.connection;
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

void AppModel::refresh() {
    state_.today = today();
    state_.now = now();
    attempt("de lire", document_.file(), [this] {
        state_.tasks = document_.read();
        state_.fileError.reset();
        mirror_.handle({Happened::listRead});
    });
    if (reminders_) reminders_->reconcile(state_.tasks, state_.now);
}

void AppModel::reload() {
    refresh();
    tell();
}

void AppModel::checkFile() {
    const bool newZone = dravel::wall::refreshZone();
    const auto moment = now();
    const auto stamp = document_.onDisk();
    if (!newZone && Day::of(moment) == state_.today && !document_.isStale(stamp)) {
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
    state_.fileError = sentence(impossible(deed, file, error));
    mirror_.handle({Happened::listUnreadable});
    return false;
}

void AppModel::store(const std::function<void()>& preference) try { preference(); } catch (const FileError& error) {
    mirror_.handle({Happened::reported, sentence(impossibleToWrite(error))});
}

const TaskItem* AppModel::find(const std::string& key) const {
    const auto found = std::ranges::find(state_.tasks, key, &TaskItem::key);
    return found == state_.tasks.end() ? nullptr : &*found;
}

bool AppModel::apply(const UserEdit& edit) {
    const TaskDocument::Change* change = nullptr;
    const auto write = [&] { change = document_.edit(edit.apply, now()); };
    if (!attempt("d'écrire", document_.file(), write)) return tell(), false;
    if (change == nullptr) return true;
    show(edit.said ? std::optional(UndoBar{*edit.said, true}) : std::nullopt);
    if (!edit.retitled) return wrote({}, {}), true;
    const auto keys = document_.follow(*change);
    auto task = *edit.retitled;
    if (const auto renamed = keys.find(task.key); renamed != keys.end()) task.key = renamed->second;
    wrote(keys, {task});
    return true;
}

void AppModel::wrote(const TaskDocument::Keys& renamed, const Tasks& silenced) {
    if (reminders_ && !renamed.empty()) reminders_->rekey(renamed);
    for (const auto& task : silenced)
        if (reminders_) reminders_->skipIfPast(task, now());
    reload();
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
    wrote(undone.keys, reminders_ ? remindersGivenBack(undone.change) : Tasks());
}

void AppModel::setDone(const std::string& key) {
    const auto latest = document_.renamed().latest(key);
    const auto* task = find(latest);
    apply(UserEdit::setDone(latest, task != nullptr ? task->title : "", true, today()));
}

void AppModel::reschedule(const std::string& key, Day to) {
    if (const auto* task = find(document_.renamed().latest(key))) reschedule(*task, to, task->time);
}

std::optional<std::string> AppModel::add(const std::string& title, std::optional<Day> day, std::optional<Clock> time,
                                         bool strong) {
    return written(UserEdit::add(title, day.value_or(today()), time, strong));
}

std::optional<std::string> AppModel::written(const std::optional<UserEdit>& edit) {
    if (!edit) return "Ce titre ne peut pas être écrit.";
    return apply(*edit) ? std::nullopt : state_.fileError;
}

void AppModel::use(const path& file) {
    store([&] { ports_.preferences.setTaskFilePath(file.string()); });
    document_.open(file);
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

void AppModel::applyLaunchAtLogin() {
    if (ports_.loginItem == nullptr || ports_.preferences.wantsLaunchAtLogin() == false) return;
    if (!ports_.loginItem->isEnabled()) setLaunchAtLogin(true);
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
