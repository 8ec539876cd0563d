#include "Tacla/Reminders/Bubbles.h"

#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/Text.h"
#include "Tacla/Reminders/ReminderPlan.h"
#include "Tacla/TaskList/TaskLines.h"

#include <algorithm>
#include <utility>

namespace tacla {

namespace SafeFile = dravel::SafeFile;

namespace {

// One bubble a line, its fields between tabs; the title, which may hold some, comes last.
constexpr std::string_view between = "\t";

std::string lineOf(const BubbleHandle& handle, const TaskItem& task) {
    std::string line = handle.server;
    for (const auto& field : {handle.id, std::to_string(task.line), task.key, task.when(), task.title})
        line.append(between).append(field);
    return line + "\n";
}

struct Remembered {
    BubbleHandle handle;
    TaskItem task;
};

// None for a line that is none of ours.
std::optional<Remembered> read(std::string_view line) {
    const auto fields = dravel::split(line, between);
    if (fields.size() < 6) return {};
    const auto when = parsedWhen(fields[4]);
    const auto number = dravel::parsedDigits(fields[2]);
    if (!when || !number) return {};
    TaskItem task{};
    task.line = *number;
    task.key = fields[3];
    task.title = line.substr(static_cast<std::size_t>(fields[5].data() - line.data()));
    task.day = when->day;
    task.time = when->time;
    return Remembered{{std::string(fields[0]), std::string(fields[1])}, std::move(task)};
}

// While nobody followed it: only the same line will do.
bool isJustTheSame(const TaskItem& was, const TaskItem& is) {
    return was.key == is.key && was.title == is.title && was.when() == is.when() && !is.done;
}

}

void RungTask::follow(const Successors& successors) {
    if (now) now = successors.of(*now);
}

Bubbles::Bubbles(NotificationServer& server, std::filesystem::path memory)
    : server_(server), memory_(std::move(memory)) {
    closed_ = server_.closed.connect([this](const BubbleHandle& handle) { forget(handle); });
    serverChanged_ = server_.changed.connect([this] { forgetOtherServers(); });
}

void Bubbles::adopt(const std::filesystem::path& list, const TaskList& tasks) {
    list_ = list;
    std::string text;
    try {
        text = SafeFile::readText(memory_);
    } catch (const dravel::FileError&) { // most often there is none
        return;
    }
    auto lines = dravel::split(text, "\n");
    const bool ours = lines.front() == list.string();
    lines.erase(lines.begin());
    for (const auto line : lines) {
        const auto remembered = read(line);
        if (!remembered) continue;
        RungTask task{remembered->task};
        const auto place = ours ? tasks.atLine(remembered->task.line) : std::nullopt;
        task.now = place ? std::optional(tasks.drawn(*place)) : std::nullopt;
        if (task.now && !isJustTheSame(remembered->task, *task.now)) task.now.reset();
        up_.emplace(remembered->handle, std::move(task));
    }
    withdrawEnded();
    forgetOtherServers();
}

void Bubbles::add(const BubbleHandle& handle, RungTask task) {
    leaving_.erase(handle);
    up_.insert_or_assign(handle, std::move(task));
    withdrawEnded();
    remember();
}

void Bubbles::follow(const Successors& successors) {
    for (auto& [handle, task] : up_) task.follow(successors);
    withdrawEnded();
    if (!up_.empty()) remember();
}

void Bubbles::withdrawEnded() {
    bool changed = false;
    for (auto next = up_.begin(); next != up_.end();) {
        const auto bubble = next++;
        if (!bubble->second.hasEnded()) continue;
        server_.close(bubble->first);
        leaving_.insert(up_.extract(bubble));
        changed = true;
    }
    if (changed) remember();
}

const RungTask* Bubbles::find(const BubbleHandle& handle) const {
    for (const auto* bubbles : {&up_, &leaving_})
        if (const auto found = bubbles->find(handle); found != bubbles->end()) return &found->second;
    return nullptr;
}

Tasks Bubbles::tasks() const {
    Tasks tasks;
    for (const auto& [handle, task] : up_) tasks.push_back(*task.now);
    return tasks;
}

std::optional<BubbleHandle> Bubbles::of(const std::string& identifier) const {
    for (const auto& [handle, task] : up_)
        if (task.now && reminderIdentifier(*task.now) == identifier) return handle;
    return {};
}

void Bubbles::remove(const BubbleHandle& handle) {
    server_.close(handle); // some servers leave it up after a button was pressed
    forget(handle);
}

void Bubbles::closeAll() {
    for (const auto& [handle, task] : std::exchange(up_, {})) server_.close(handle);
    remember();
}

// What another server showed went with it.
void Bubbles::forgetOtherServers() {
    if (up_.empty() && leaving_.empty()) return;
    server_.ask(life_.guard([this](const NotificationServer::Capabilities& present) {
        if (!present.reachable) return;
        const auto elsewhere = [&](const auto& bubble) { return bubble.first.server != present.server; };
        std::erase_if(leaving_, elsewhere);
        if (std::erase_if(up_, elsewhere) > 0) remember();
    }));
}

void Bubbles::forget(const BubbleHandle& handle) {
    leaving_.erase(handle);
    if (up_.erase(handle) > 0) remember();
}

// Where that cannot be written, the buttons work until this process ends.
void Bubbles::remember() const {
    std::string text = list_.string() + "\n";
    for (const auto& [handle, task] : up_) text += lineOf(handle, *task.now);
    try {
        SafeFile::replaceOwn(memory_, text, memory_.parent_path());
    } catch (const dravel::FileError&) { // nothing to be done
    }
}

}
