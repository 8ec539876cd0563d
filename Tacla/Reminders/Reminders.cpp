#include "Tacla/Reminders/Reminders.h"

#include "Tacla/Preferences/NotifiedTasks.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace tacla {

using namespace std::chrono_literals;

namespace {

// A bubble takes its time to be read, and a server to draw it.
constexpr std::size_t atOnce = 4;
constexpr auto betweenThem = 1s;

void addMissing(Notified& list, const Notified& others) {
    std::unordered_set<std::string> present(list.begin(), list.end());
    for (const auto& entry : others)
        if (present.insert(entry).second) list.push_back(entry);
}

void removeAll(Notified& list, const Notified& others) {
    const std::unordered_set<std::string> gone(others.begin(), others.end());
    std::erase_if(list, [&gone](const std::string& entry) { return gone.contains(entry); });
}

}

NotificationCentre::NotificationCentre(dravel::MainLoop& loop, NotificationServer& server, Bubbles& bubbles,
                                       Ledger ledger)
    : loop_(loop), server_(server), bubbles_(bubbles), ledger_(std::move(ledger)) {
    connections_.push_back(server_.changed.connect([this] {
        reachable_ = false;
        deliver();
    }));
    // A server that had no room for more may have some now.
    connections_.push_back(server_.closed.connect([this](const BubbleHandle&) { deliver(); }));
}

void NotificationCentre::put(const Reminder& reminder) {
    pending_[reminder.identifier] = reminder.moment;
    if (held_.try_emplace(reminder.identifier, Held{reminder.task, added_ + 1}).second) ++added_;
}

void NotificationCentre::remove(const std::string& identifier) {
    pending_.erase(identifier);
    held_.erase(identifier);
}

void NotificationCentre::follow(const Successors& successors) {
    for (auto& [order, leaving] : leaving_) leaving.task.follow(successors);
    const auto moments = std::exchange(pending_, {});
    for (const auto& [identifier, held] : std::exchange(held_, {})) {
        const auto task = successors.of(held.task);
        if (!task || task->done || task->when() != held.task.when()) continue;
        const auto followed = reminderIdentifier(*task);
        pending_[followed] = moments.at(identifier);
        held_[followed] = {*task, held.order};
    }
}

std::vector<std::string> NotificationCentre::due() const {
    std::vector<std::pair<std::pair<Instant, std::uint64_t>, std::string>> found;
    const auto now = loop_.now();
    for (const auto& [identifier, moment] : pending_) {
        if (moment <= now) found.push_back({{moment, held_.at(identifier).order}, identifier});
    }
    const auto first = found.begin() + static_cast<std::ptrdiff_t>(std::min(atOnce, found.size()));
    std::ranges::partial_sort(found, first);
    std::vector<std::string> identifiers;
    for (auto next = found.begin(); next != first; ++next) identifiers.push_back(std::move(next->second));
    return identifiers;
}

void NotificationCentre::wakeForNext() {
    wake_.reset();
    std::optional<Instant> next;
    const auto now = loop_.now();
    for (const auto& [identifier, moment] : pending_) {
        if (moment > now && (!next || moment < *next)) next = moment;
    }
    if (next) wake_ = loop_.at(*next, [this] { deliver(); });
}

void NotificationCentre::deliver() {
    wakeForNext();
    if (asking_ || pause_ || !leaving_.empty() || due().empty()) return;
    if (reachable_) return showDue();
    asking_ = true;
    server_.ask(life_.guard([this](const NotificationServer::Capabilities& capabilities) {
        asking_ = false;
        reachable_ = capabilities.reachable;
        if (reachable_) showDue();
    }));
}

void NotificationCentre::showDue() {
    const auto identifiers = due();
    if (identifiers.empty()) return;
    // Written down first: should the program end just now, none rings twice.
    ledger_.showing(identifiers);
    pause_ = loop_.after(betweenThem, [this] {
        pause_.reset();
        if (reachable_) deliver();
    });
    for (const auto& identifier : identifiers) show(identifier);
}

void NotificationCentre::show(const std::string& identifier) {
    const auto& held = held_.at(identifier);
    const auto order = held.order;
    leaving_.emplace(order, Leaving{{held.task}, pending_.at(identifier), order});
    const NotificationRequest request{reminderContent(held.task, Day::of(loop_.now())), bubbles_.of(identifier)};
    remove(identifier);
    server_.show(request, life_.guard([this, order](const NotificationServer::Error& error, const BubbleHandle& shown) {
        answered(order, error, shown);
    }));
}

void NotificationCentre::answered(std::uint64_t order, const NotificationServer::Error& error,
                                  const BubbleHandle& shown) {
    auto leaving = std::move(leaving_.extract(order).mapped());
    if (error) return refused(leaving);
    bubbles_.add(shown, std::move(leaving.task));
    if (reachable_) deliver();
}

// Tried again when a server comes, when one of its bubbles closes, or at the next minute: never at once, or a server
// that always refuses would be asked without end.
void NotificationCentre::refused(const Leaving& leaving) {
    reachable_ = false;
    ledger_.refused(reminderIdentifier(leaving.task.now.value_or(leaving.task.shown)));
    if (leaving.task.hasEnded()) return;
    const auto identifier = reminderIdentifier(*leaving.task.now);
    pending_[identifier] = leaving.moment;
    held_[identifier] = {*leaving.task.now, leaving.order};
}

Reminders::Reminders(dravel::MainLoop& loop, NotificationServer& server, Preferences& preferences,
                     std::filesystem::path memoryOfBubbles, Report report)
    : server_(server), preferences_(preferences), report_(std::move(report)),
      bubbles_(server, std::move(memoryOfBubbles)),
      centre_(
          loop, server, bubbles_,
          {.showing =
               [this](const Notified& identifiers) { store([&](Notified& list) { addMissing(list, identifiers); }); },
           .refused =
               [this](const std::string& identifier) {
                   store([&](Notified& list) { removeAll(list, {identifier}); });
               }}) {
    responded_ = server.responded.connect([this](const NotificationServer::Response& response) {
        if (bubbles_.find(response.bubble) != nullptr) answered(response);
    });
}

void Reminders::adopt(const std::filesystem::path& list, const TaskList& tasks) {
    bubbles_.adopt(list, tasks);
    if (bubbles_.tasks().empty()) return;
    server_.ask(life_.guard([this](const NotificationServer::Capabilities& present) {
        if (!present.tellsOnlyOwner) return;
        for (const auto& task : bubbles_.tasks()) centre_.put({reminderIdentifier(task), task, *task.at()});
        centre_.deliver();
    }));
}

void Reminders::follow(const Successors& successors) {
    centre_.follow(successors);
    bubbles_.follow(successors);
    const auto& keys = successors.newKeys();
    if (!keys.empty()) store([&](Notified& list) { list = NotifiedTasks::rekeyed(list, keys); });
}

void Reminders::reconcile(const TaskList& tasks, Instant now) {
    catchUpStoring();
    const auto plan = planReminders(tasks, centre_.pending(), notified_, now);
    for (const auto& identifier : plan.stale) centre_.remove(identifier);
    for (const auto* reminders : {&plan.unchanged, &plan.schedule, &plan.catchUp})
        for (const auto& reminder : *reminders) centre_.put(reminder);
    if (!plan.expired.empty()) store([&](Notified& list) { removeAll(list, plan.expired); });
    full_ = plan.full;
    centre_.deliver();
}

void Reminders::minutePassed(const TaskList& tasks, Instant now) {
    if (full_) return reconcile(tasks, now);
    catchUpStoring();
    centre_.deliver();
}

void Reminders::skipIfPast(const TaskItem& task, Instant now) {
    const auto moment = task.at();
    if (!moment || *moment > now) return;
    centre_.remove(reminderIdentifier(task));
    store([&](Notified& list) { addMissing(list, {reminderIdentifier(task)}); });
}

void Reminders::ringAgain(const TaskItem& task) {
    store([&](Notified& list) { removeAll(list, {reminderIdentifier(task)}); });
}

RungTask Reminders::take(const BubbleHandle& handle) {
    auto task = *bubbles_.find(handle);
    bubbles_.remove(handle);
    return task;
}

// Another process may have changed the stored list: what it added counts here too, and nothing of ours is lost by it.
void Reminders::store(const std::function<void(Notified&)>& change) {
    const auto known = notified_;
    const auto changed = [&](const Notified& stored) {
        auto theirs = stored;
        removeAll(theirs, known);
        auto list = known;
        change(list);
        addMissing(list, theirs);
        return list;
    };
    try {
        preferences_.updateNotifiedTasks([&](const Notified& stored) { return notified_ = changed(stored); });
    } catch (const dravel::FileError& error) {
        notified_ = changed({});
        report_(error);
    }
}

// Else the next start would show it all again.
void Reminders::catchUpStoring() {
    auto stored = preferences_.notifiedTasks();
    addMissing(notified_, stored);
    if (stored.size() < notified_.size()) store([](const Notified&) {});
}

}
