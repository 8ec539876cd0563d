#include "tests/support/ModelWorld.h"

#include "DravelKit/Foundation/Text.h"
#include "DravelKit/Foundation/WallCalendar.h"

#include <algorithm>
#include <memory>

namespace tacla::testing {

namespace fs = std::filesystem;

static dravel::UserFolders foldersIn(const fs::path& all) {
    return {all, all, all, all, all / "Documents", all / "locks"};
}

Instant moment(std::string_view text) {
    const auto day = Day::parse(text.substr(0, 10)).value();
    const auto time = Clock::parse(text.substr(11)).value();
    return dravel::wall::instant({day.year, day.month, day.day, time.hour, time.minute});
}

std::vector<std::string> linesOf(std::string_view text, std::string_view end) {
    auto lines = dravel::split(text, end);
    if (lines.back().empty()) lines.pop_back();
    return {lines.begin(), lines.end()};
}

ModelWorld::ModelWorld(std::string_view now, std::string_view tasks)
    : file(folder / "taches.md"), loop(moment(now)), folders(foldersIn(folder.path())),
      preferences(folder / "preferences.json", folder / "locks"), model(ports(), file) {
    writeBytes(file, tasks);
    observer = model.changed.connect([this] { ++told; });
}

AppModel::Ports ModelWorld::ports() {
    return {loop, background, disk, preferences, folders, &notifications, &loginItem, &calendar};
}

void ModelWorld::restart(const std::function<void()>& meanwhile) {
    std::destroy_at(&model);
    if (meanwhile) meanwhile();
    std::construct_at(&model, ports(), file);
    start();
}

void ModelWorld::start() {
    model.start();
    loop.runPosted();
    told = 0;
}

void ModelWorld::save(std::string_view text) const {
    const auto before = fs::exists(file) ? fs::last_write_time(file) : fs::file_time_type::clock::now();
    writeBytes(file, text);
    fs::last_write_time(file, before + std::chrono::seconds(1));
}

TaskItem ModelWorld::task(std::string_view title) const {
    const auto& tasks = state().tasks;
    const auto found = std::ranges::find(tasks, title, &TaskItem::title);
    if (found == tasks.end()) throw std::runtime_error("no task " + std::string(title));
    return *found;
}

}
