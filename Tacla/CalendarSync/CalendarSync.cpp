#include "Tacla/CalendarSync/CalendarSync.h"

#include "DravelKit/Foundation/Text.h"
#include "DravelKit/Foundation/WallNames.h"
#include "DravelKit/Net/Url.h"
#include "Tacla/CalendarSync/CalendarEvent.h"
#include "Tacla/CalendarSync/SyncPlan.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <condition_variable>
#include <utility>

namespace tacla {

namespace {

constexpr double atOnce = 200, perSecond = 6;
constexpr std::chrono::seconds longestBackoff{64}, longestRetryAfter{300};

// Whether the service asks for fewer requests.
bool refusesForPace(const dravel::HttpResponse& response) {
    return response.status == 429 || response.status >= 500 ||
           (response.status == 403 && namesRateLimit(response.body));
}

constexpr std::size_t shownCharacters = 120;

std::string describe(SyncError::Kind kind, long status, const std::string& body) {
    switch (kind) {
    case SyncError::Kind::http: {
        const std::string_view text = dravel::isValidUtf8(body) ? std::string_view(body) : std::string_view();
        return "Google Agenda a répondu " + std::to_string(status) + " " +
               std::string(dravel::firstCharacters(text, shownCharacters));
    }
    case SyncError::Kind::emptyFile: return "Le fichier ne contient aucune tâche : l'agenda n'est pas vidé";
    case SyncError::Kind::calendarGone: return "L'agenda de Tacla est introuvable dans Google Agenda";
    }
    return {};
}

}

SyncError::SyncError(Kind errorKind, long errorStatus, const std::string& body)
    : std::runtime_error(describe(errorKind, errorStatus, body)), kind(errorKind), status(errorStatus) {}

SyncError SyncError::http(long status, const std::string& body) { return SyncError(Kind::http, status, body); }

Pace::Wait Pace::beforeRun(Moment now) const {
    return std::chrono::ceil<Wait>(std::max(notBefore_ - now, Moment::duration::zero()));
}

Pace::Wait Pace::beforeRequest(Moment now) {
    const std::chrono::duration<double> passed = now - counted_;
    counted_ = now;
    allowance_ = std::min(allowance_ + passed.count() * perSecond, atOnce) - 1;
    return std::chrono::ceil<Wait>(std::chrono::duration<double>(std::max(-allowance_ / perSecond, 0.0)));
}

void Pace::refused(Moment now, std::optional<std::chrono::seconds> retryAfter) {
    notBefore_ = now + (retryAfter ? std::min(*retryAfter, longestRetryAfter) : backoff_);
    backoff_ = std::min(backoff_ * 2, longestBackoff);
}

void Pace::completed() { backoff_ = std::chrono::seconds(1); }

CalendarSync::Time CalendarSync::Time::real() {
    return {[] { return std::chrono::steady_clock::now(); },
            [](Pace::Wait wait, std::stop_token stop) {
                std::mutex mutex;
                std::unique_lock lock(mutex);
                std::condition_variable_any().wait_for(lock, std::move(stop), wait, [] { return false; });
            }};
}

// What one pass needs besides the object's own state.
struct CalendarSync::Pass {
    CalendarSync& sync;
    std::stop_token stop;
    std::string timeZone = dravel::wall::zoneIdentifier();
    dravel::HttpClient http{sync.limits_}; // one connection, kept alive for the pass and not longer

    void wait(Pace::Wait time) {
        if (time > Pace::Wait::zero()) sync.time_.sleep(time, stop);
    }

    std::string request(const char* method, const std::string& url, std::optional<std::string> body = {}) {
        dravel::HttpRequest request{.method = method, .url = url, .body = std::move(body)};
        if (request.body) request.headers.emplace_back("Content-Type", "application/json");
        auto response = send(request);
        if (response.status == 401) {
            sync.auth_.invalidateAccessToken();
            response = send(request);
        }
        const bool gone = request.method == "DELETE" && (response.status == 404 || response.status == 410);
        if (gone || (response.status >= 200 && response.status < 300)) return std::move(response.body);
        if (refusesForPace(response)) sync.pace_.refused(sync.time_.now(), response.retryAfter);
        throw SyncError::http(response.status, response.body);
    }

    dravel::HttpResponse send(dravel::HttpRequest& request) {
        request.bearer = sync.auth_.validAccessToken(stop);
        wait(sync.pace_.beforeRequest(sync.time_.now()));
        return http.send(request, stop);
    }

    std::string eventsUrl(const std::string& calendar) const {
        return sync.calendarApi_ + "/calendars/" + dravel::percentEncoded(calendar) + "/events";
    }

    std::vector<Managed> list(const std::string& calendar) {
        std::vector<Managed> all;
        std::optional<std::string> token;
        while (true) {
            dravel::QueryItems query{
                {"maxResults", "2500"}, {"showDeleted", "false"}, {"privateExtendedProperty", "tacla=1"}};
            if (token) query.emplace_back("pageToken", *token);
            auto page = readListingPage(request("GET", eventsUrl(calendar) + "?" + dravel::encodedItems(query)));
            if (!page) throw SyncError::http(200, "liste d'événements illisible");
            std::move(page->managed.begin(), page->managed.end(), std::back_inserter(all));
            if (!page->nextPageToken) return all;
            if (page->nextPageToken == token) throw SyncError::http(200, "liste d'événements sans fin");
            token = std::move(page->nextPageToken);
        }
    }

    std::string create() {
        const nlohmann::json calendar{{"summary", "Tacla"}, {"description", managedByTacla}, {"timeZone", timeZone}};
        auto id = readCalendarID(request("POST", sync.calendarApi_ + "/calendars", calendar.dump()));
        if (!id) throw SyncError::http(200, "agenda créé sans identifiant");
        return *id;
    }

    // The identifier is on disk before the first event goes out, and is remembered when it cannot be put there:
    // otherwise the next pass would create a second calendar.
    std::string createCalendar() {
        auto& unstored = sync.unstoredCalendar_;
        if (!unstored) unstored = create();
        sync.preferences_.setCalendar(*unstored, true);
        return *std::exchange(unstored, std::nullopt);
    }

    struct Calendar {
        std::string id;
        std::vector<Managed> events;
    };

    Calendar openCalendar() {
        const auto known = sync.preferences_.calendarID();
        if (!known) return {createCalendar(), {}};
        try {
            return {*known, list(*known)};
        } catch (const SyncError& error) {
            if (error.kind != SyncError::Kind::http || error.status != 404) throw;
        }
        if (!sync.preferences_.calendarCreatedByTacla()) throw SyncError(SyncError::Kind::calendarGone);
        return {createCalendar(), {}};
    }

    void perform(const SyncPlan& plan, const std::string& calendar, const Progress& progress) {
        const auto events = eventsUrl(calendar);
        std::size_t sent = 0;
        const auto send = [&](const char* method, const std::string& url, std::optional<std::string> body) {
            if (progress) progress(sent++, plan.size());
            request(method, url, std::move(body));
        };
        const auto event = [&](const std::string& id) { return events + "/" + dravel::percentEncoded(id); };
        for (const auto& patch : plan.patch) send("PATCH", event(patch.id), patch.event.patchBody());
        for (const auto& post : plan.post) send("POST", events, post.postBody());
        for (const auto& id : plan.remove) send("DELETE", event(id), std::nullopt);
    }
};

CalendarSync::CalendarSync(dravel::GoogleAuth& auth, Preferences& preferences, std::string calendarApi, Time time,
                           dravel::HttpLimits limits)
    : auth_(auth), preferences_(preferences), calendarApi_(std::move(calendarApi)), time_(std::move(time)),
      limits_(limits) {}

CalendarSync::Result CalendarSync::run(const Tasks& tasks, const std::map<std::string, std::string>& renamed,
                                       std::stop_token stop, const Progress& progress) {
    const std::scoped_lock onePass(running_);
    Pass pass{*this, std::move(stop)};
    pass.wait(pace_.beforeRun(time_.now()));
    const auto calendar = pass.openCalendar();
    // A file that was cut to nothing must never empty the calendar.
    if (tasks.empty() && !calendar.events.empty()) throw SyncError(SyncError::Kind::emptyFile);
    const auto plan = planSync(calendar.events, tasks, renamed, pass.timeZone);
    pass.perform(plan, calendar.id, progress);
    pace_.completed();
    return {static_cast<int>(plan.post.size()), static_cast<int>(plan.patch.size()),
            static_cast<int>(plan.remove.size())};
}

}
