#include "Tacla/Reminders/Reminders.h"

#include "Tacla/Preferences/NotifiedTasks.h"

#include <algorithm>
#include <utility>

namespace tacla {

namespace {

using Notified = Preferences::Notified;

Notified with(Notified list, const std::vector<std::string>& identifiers) {
    for (const auto& identifier : identifiers) {
        if (std::ranges::find(list, identifier) == list.end()) list.push_back(identifier);
    }
    return list;
}

Notified without(Notified list, const std::vector<std::string>& identifiers) {
    std::erase_if(list, [&identifiers](const std::string& entry) {
        return std::ranges::find(identifiers, entry) != identifiers.end();
    });
    return list;
}

NotificationRequest request(const Reminder& reminder) {
    return {reminder.identifier, reminderContent(reminder.task), reminder.moment};
}

}

NotificationCentre::NotificationCentre(dravel::MainLoop& loop, NotificationServer& server, Ledger ledger)
    : loop_(loop), server_(server), ledger_(std::move(ledger)) {
    serverChanged_ = server_.changed.connect([this] {
        reachable_ = false;
        deliver();
    });
}

void NotificationCentre::add(NotificationRequest request) {
    const auto identifier = request.identifier;
    record_.pending[identifier] = request.moment.value();
    held_[identifier] = {std::move(request), ++added_};
}

void NotificationCentre::remove(const std::string& identifier) {
    record_.pending.erase(identifier);
    held_.erase(identifier);
}

void NotificationCentre::rekey(const std::map<std::string, std::string>& keys) {
    // The old identifiers stay too: a new task of the old title must not ring for a moment that has rung.
    std::vector<std::string> under;
    for (const auto& [from, to] : keys) {
        const auto prefix = from + "@";
        for (auto old = record_.shown.lower_bound(prefix); old != record_.shown.end() && old->starts_with(prefix);
             ++old) {
            under.push_back(to + old->substr(from.size()));
        }
    }
    record_.shown.insert(under.begin(), under.end());
}

std::vector<std::string> NotificationCentre::due() const {
    std::vector<std::pair<std::pair<Instant, std::uint64_t>, std::string>> found;
    const auto now = loop_.now();
    for (const auto& [identifier, moment] : record_.pending) {
        if (moment <= now) found.push_back({{moment, held_.at(identifier).order}, identifier});
    }
    std::ranges::sort(found);
    std::vector<std::string> identifiers;
    identifiers.reserve(found.size());
    for (auto& [order, identifier] : found) identifiers.push_back(std::move(identifier));
    return identifiers;
}

void NotificationCentre::wakeForNext() {
    wake_.reset();
    std::optional<Instant> next;
    const auto now = loop_.now();
    for (const auto& [identifier, moment] : record_.pending) {
        if (moment > now && (!next || moment < *next)) next = moment;
    }
    if (next) wake_ = loop_.at(*next, [this] { deliver(); });
}

void NotificationCentre::deliver() {
    wakeForNext();
    if (asking_ || due().empty()) return;
    if (reachable_) return showDue();
    asking_ = true;
    server_.ask(life_.guard([this](NotificationServer::Capabilities capabilities) {
        asking_ = false;
        reachable_ = capabilities.reachable;
        if (reachable_) showDue();
    }));
}

void NotificationCentre::showDue() {
    const auto identifiers = due();
    std::vector<Held> leaving;
    leaving.reserve(identifiers.size());
    for (const auto& identifier : identifiers) {
        leaving.push_back(std::move(held_.at(identifier)));
        remove(identifier);
        record_.shown.insert(identifier);
    }
    // Written down first: should the program end just now, none rings twice.
    if (!identifiers.empty()) ledger_.showing(identifiers);
    for (const auto& held : leaving) {
        server_.show(held.request, life_.guard([this, held](const NotificationServer::Error& error) {
            if (error) refused(held);
        }));
    }
}

void NotificationCentre::refused(const Held& held) {
    const auto& identifier = held.request.identifier;
    // Tried again when a server comes, or at the next minute: never at once, or a server that always refuses would be
    // asked without end.
    reachable_ = false;
    record_.shown.erase(identifier);
    record_.pending[identifier] = held.request.moment.value();
    held_[identifier] = held;
    ledger_.refused(identifier);
}

Reminders::Reminders(dravel::MainLoop& loop, NotificationServer& server, Preferences& preferences, Report report)
    : preferences_(preferences), report_(std::move(report)),
      centre_(loop, server,
              {.showing =
                   [this](const std::vector<std::string>& identifiers) {
                       store([&](Notified list) { return with(std::move(list), identifiers); });
                   },
               .refused =
                   [this](const std::string& identifier) {
                       store([&](Notified list) { return without(std::move(list), {identifier}); });
                   }}) {}

void Reminders::reconcile(const Tasks& tasks, Instant now) {
    catchUpStoring();
    const auto plan = planReminders(tasks, centre_.record(), preferences_.notifiedTasks(), now);
    for (const auto& identifier : plan.stale) centre_.remove(identifier);
    for (const auto& reminder : plan.schedule) centre_.add(request(reminder));
    for (const auto& reminder : plan.catchUp) centre_.add(request(reminder));
    if (!plan.expired.empty()) store([&](Notified list) { return without(std::move(list), plan.expired); });
    full_ = plan.full;
    centre_.deliver();
}

void Reminders::minutePassed(const Tasks& tasks, Instant now) {
    if (full_) return reconcile(tasks, now);
    catchUpStoring();
    centre_.deliver();
}

void Reminders::skipIfPast(const TaskItem& task, Instant now) {
    const auto moment = task.at();
    if (!moment || *moment > now) return;
    store([&](Notified list) { return with(std::move(list), {reminderIdentifier(task)}); });
}

void Reminders::rekey(const std::map<std::string, std::string>& keys) {
    centre_.rekey(keys);
    store([&](const Notified& list) { return NotifiedTasks::rekeyed(list, keys); });
}

void Reminders::store(const std::function<Notified(Notified)>& change) {
    const auto& shown = record().shown;
    try {
        preferences_.updateNotifiedTasks([&](Notified list) {
            if (behind_) list = with(std::move(list), {shown.begin(), shown.end()});
            return change(std::move(list));
        });
        behind_ = false;
    } catch (const dravel::FileError& error) {
        behind_ = true;
        report_(error);
    }
}

// Else the next start would show it all again.
void Reminders::catchUpStoring() {
    if (behind_) store([](Notified list) { return list; });
}

}
