#include "Tacla/AppModel/AppModel.h"

#include "DravelKit/Foundation/WallCalendar.h"
#include "Tacla/AppModel/AppModelInside.h"
#include "Tacla/Preferences/TaskFileLocation.h"

#include <utility>

namespace tacla {

namespace {

using namespace std::chrono_literals;

constexpr auto pollPeriod = 2s;
constexpr auto syncPeriod = 600s;
constexpr auto syncDelayAfterWake = 2s;
constexpr auto syncDelayAfterPoll = 1s;

std::string failure(std::string_view what, const std::filesystem::path& path, const dravel::FileError& error) {
    return std::string(what) + path.string() + " : " + error.description();
}

}

std::string writeFailure(const std::filesystem::path& path, const dravel::FileError& error) {
    return failure("Impossible d'écrire ", path, error);
}

AppModel::Inside::Inside(AppModel& owner, World ports, std::filesystem::path path, bool isPassive)
    : model(owner), world(std::move(ports)), passive(isPassive), file(path, world.folders) {
    state.today = today();
    state.now = now();
    state.file = std::move(path);
    state.calendarSync = world.preferences.calendarSync();
    state.launchAtLogin = world.loginItem != nullptr && world.loginItem->isEnabled();
    if (passive || world.notifications == nullptr) return;
    reminders.emplace(world.loop, *world.notifications, world.preferences,
                      [this](const dravel::FileError& error) { model.report(writeFailure(error.path, error)); });
}

AppModel::AppModel(World world, std::filesystem::path file, bool passive)
    : inside_(std::make_unique<Inside>(*this, std::move(world), std::move(file), passive)) {}

AppModel::~AppModel() = default;

const ModelState& AppModel::state() const { return inside_->state; }

const ReminderRecord* AppModel::reminders() const {
    return inside_->reminders ? &inside_->reminders->record() : nullptr;
}

void AppModel::start() {
    auto& in = *inside_;
    dravel::wall::refreshZone(); // the zone of today; the poll notices another one
    if (in.file.path() == documentsTaskFile(in.world.folders)) in.createIfMissing();
    reload();
    in.file.pruneCopies(in.now());
    in.poll.emplace(in.world.loop, pollPeriod, [this] { checkFile(); });
    in.periodic.emplace(in.world.loop, syncPeriod, [this] { inside_->everyPeriod(); });
    in.askAccount();
    refreshPermissions();
    if (in.world.notifications != nullptr) {
        in.serverChanged = in.world.notifications->changed.connect([this] { refreshPermissions(); });
    }
}

void AppModel::Inside::refresh() {
    state.today = today();
    state.now = now();
    try {
        state.tasks = file.read();
        state.fileError.reset();
    } catch (const dravel::FileError& error) {
        state.fileError = failure("Impossible de lire ", file.path(), error);
    }
    if (reminders) reminders->reconcile(state.tasks, state.now);
}

void AppModel::reload() {
    inside_->refresh();
    changed();
}

void AppModel::checkFile() {
    auto& in = *inside_;
    const bool newZone = dravel::wall::refreshZone();
    const auto now = in.now();
    const auto stamp = in.file.onDisk();
    if (!newZone && Day::of(now) == in.state.today && !in.file.isStale(stamp)) {
        if (Clock::of(now) == Clock::of(in.state.now)) return;
        in.state.now = now;
        if (in.reminders) in.reminders->minutePassed(in.state.tasks, now);
        changed();
        return;
    }
    if (Day::of(now) != in.state.today) in.file.pruneCopies(now);
    reload();
    // They differ only when the file was saved again meanwhile, or could not be read. An editor's change waits for the
    // periodic sync: it is often one of several.
    if (stamp != in.file.known()) in.scheduleSync(syncDelayAfterPoll);
}

void AppModel::wokeUp() {
    reload();
    inside_->scheduleSync(syncDelayAfterWake);
}

void AppModel::report(const std::string& message) {
    inside_->state.syncError = message;
    changed();
}

bool AppModel::Inside::createIfMissing() {
    try {
        file.create();
        return true;
    } catch (const dravel::FileError& error) {
        state.fileError = failure("Impossible de créer ", file.path(), error);
        return false;
    }
}

bool AppModel::Inside::store(const std::function<void()>& preference) {
    try {
        preference();
        return true;
    } catch (const dravel::FileError& error) {
        state.syncError = writeFailure(error.path, error);
        return false;
    }
}

void AppModel::use(const std::filesystem::path& path) {
    auto& in = *inside_;
    in.store([&] { in.world.preferences.setTaskFilePath(path.string()); });
    in.file.bind(path);
    in.state.file = path;
    in.forgetLastChange();
    reload();
    in.scheduleSync(0s);
}

void AppModel::createAndUse(const std::filesystem::path& path) {
    auto& in = *inside_;
    const auto before = in.file.path();
    in.file.bind(path);
    if (in.createIfMissing()) return use(path);
    in.file.bind(before); // the list in use stays when the new one cannot be made
    changed();
}

void AppModel::beginOnboarding() {
    inside_->state.onboarding = true;
    changed();
}

void AppModel::finishOnboarding() {
    auto& in = *inside_;
    in.store([&] { in.world.preferences.setOnboardingDone(true); });
    in.state.onboarding = false;
    changed();
}

void AppModel::requestSection(std::optional<std::string> section) {
    inside_->state.requestedSection = std::move(section);
    changed();
}

}
