#include "Tacla/CalendarSync/CalendarSync.h"

#include "DravelKit/Foundation/OpenFile.h"
#include "DravelKit/Foundation/Text.h"
#include "DravelKit/Foundation/WallNames.h"
#include "DravelKit/GoogleAuth/AuthError.h"
#include "DravelKit/Net/Url.h"
#include "Tacla/CalendarSync/CalendarEvent.h"
#include "Tacla/CalendarSync/SyncPlan.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace tacla {

namespace {

constexpr double atOnce = 200, perSecond = 6;
constexpr std::chrono::seconds longestBackoff{64}, longestRetryAfter{300};

constexpr auto turnPatience = std::chrono::minutes(2);
constexpr auto turnSaidAfter = std::chrono::seconds(1);
constexpr auto turnPause = std::chrono::milliseconds(100);

constexpr auto later = "Rien n'est perdu : la prochaine recopie fera le reste";
constexpr auto lookThere = "Supprimez dans Google Agenda l'agenda « Tacla » vide, s'il y est, puis désactivez et "
                           "réactivez la recopie dans les réglages de Tacla";
constexpr auto signInAgain = "Reconnectez-vous dans les réglages de Tacla";

// Whether the service asks for fewer requests, or is in trouble itself.
bool refusesForPace(long status, const std::string& body) {
    return status == 429 || status >= 500 || (status == 403 && namesRateLimit(body));
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
    case SyncError::Kind::settingsLost: return "Réglages de Tacla illisibles : " + body;
    case SyncError::Kind::busy:
        return "Une autre recopie dans Google Agenda dure depuis plus de deux minutes : réessayez plus tard";
    case SyncError::Kind::inDoubt:
        return "La création de l'agenda a été interrompue : Google l'a peut-être fait, Tacla n'en fait pas un second";
    }
    return {};
}

std::string joined(const std::vector<std::string>& parts, std::string_view between) {
    std::string all;
    for (const auto& part : parts) {
        if (!part.empty()) all.append(all.empty() ? std::string_view() : between).append(part);
    }
    return all;
}

std::string inQuotes(std::string_view text) {
    return "« " + std::string(dravel::firstCharacters(text, shownCharacters)) + " »";
}

std::string adviceOn(long status, bool aboutTask) {
    if (status == 401) return signInAgain;
    if (status == 403) return "Activez l'API Google Calendar dans votre projet Google, ou reconnectez-vous";
    return aboutTask && status >= 400 ? "Corrigez cette tâche, ou retirez sa date" : "";
}

std::string hint(SyncError::Kind kind, long status, const std::string& body, const std::string& task) {
    if (kind == SyncError::Kind::inDoubt) return lookThere;
    if (kind != SyncError::Kind::http) return {};
    const auto said = serviceMessage(body);
    const auto google = said.empty() ? said : "Google dit : " + inQuotes(said);
    if (refusesForPace(status, body)) return joined({google, later}, ". ");
    return joined({task.empty() ? task : "Tâche refusée : " + inQuotes(task), google, adviceOn(status, !task.empty())},
                  ". ");
}

// Whether a request that ended so has made nothing: the service said no, or was never reached.
bool isRefusal(const std::exception& error) {
    if (const auto* sync = dynamic_cast<const SyncError*>(&error)) return sync->status >= 300;
    const auto* http = dynamic_cast<const dravel::HttpError*>(&error);
    return http == nullptr || http->kind == dravel::HttpError::Kind::unknownHost ||
           http->kind == dravel::HttpError::Kind::unreachable;
}

void throwIfStopped(const std::stop_token& stop) {
    if (stop.stop_requested()) throw dravel::HttpError(dravel::HttpError::Kind::cancelled, "Google Agenda");
}

}

SyncError::SyncError(Kind errorKind, long errorStatus, const std::string& body, const std::string& task)
    : std::runtime_error(describe(errorKind, errorStatus, body)), kind(errorKind), status(errorStatus),
      hint(tacla::hint(errorKind, errorStatus, body, task)),
      passing(errorKind == Kind::busy || (errorKind == Kind::http && refusesForPace(errorStatus, body))) {}

SyncError SyncError::http(long status, const std::string& body, const std::string& task) {
    return SyncError(Kind::http, status, body, task);
}

std::string hintOf(const std::exception& error) {
    if (const auto* sync = dynamic_cast<const SyncError*>(&error)) return sync->hint;
    if (const auto* auth = dynamic_cast<const dravel::AuthError*>(&error))
        return auth->kind == dravel::AuthError::Kind::notSignedIn ? signInAgain : "";
    return passes(error) ? later : "";
}

bool passes(const std::exception& error) {
    if (const auto* sync = dynamic_cast<const SyncError*>(&error)) return sync->passing;
    if (const auto* auth = dynamic_cast<const dravel::AuthError*>(&error))
        return auth->kind == dravel::AuthError::Kind::keyringUnreachable ||
               auth->kind == dravel::AuthError::Kind::unreadableAnswer ||
               auth->kind == dravel::AuthError::Kind::loginFailed; // Google's answer to a refresh, such as a 503
    return dynamic_cast<const dravel::HttpError*>(&error) != nullptr;
}

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

    std::string request(const char* method, const std::string& url, std::optional<std::string> body = {},
                        const std::string& task = "") {
        dravel::HttpRequest request{.method = method, .url = url, .body = std::move(body)};
        if (request.body) request.headers.emplace_back("Content-Type", "application/json");
        auto response = send(request);
        if (response.status == 401) {
            sync.auth_.invalidateAccessToken();
            response = send(request);
        }
        const bool gone = request.method == "DELETE" && (response.status == 404 || response.status == 410);
        if (gone || (response.status >= 200 && response.status < 300)) return std::move(response.body);
        if (refusesForPace(response.status, response.body)) sync.pace_.refused(sync.time_.now(), response.retryAfter);
        throw SyncError::http(response.status, response.body, task);
    }

    dravel::HttpResponse send(dravel::HttpRequest& request) {
        throwIfStopped(stop);
        request.bearer = sync.auth_.validAccessToken(stop);
        wait(sync.pace_.beforeRequest(sync.time_.now()));
        throwIfStopped(stop);
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

    // That it is asked for is on disk before it is, and its identifier before the first event goes out, or is
    // remembered when it cannot be put there: otherwise the next pass would create a second calendar. There is no way
    // to ask the service for calendars, so only the user can tell what became of a request without an answer.
    std::string createCalendar() {
        auto& preferences = sync.preferences_;
        if (preferences.calendarMaking() != Preferences::Making::none) {
            preferences.setCalendarMaking(Preferences::Making::told);
            throw SyncError(SyncError::Kind::inDoubt);
        }
        sync.auth_.validAccessToken(stop); // without one nothing is asked for
        throwIfStopped(stop);
        preferences.setCalendarMaking(Preferences::Making::asked);
        try {
            sync.known_ = {create(), true};
        } catch (const std::exception& error) {
            if (isRefusal(error)) preferences.setCalendarMaking(Preferences::Making::none);
            throw;
        }
        sync.unstored_ = true;
        sync.store();
        return sync.known_->id;
    }

    struct Calendar {
        std::string id;
        std::vector<Managed> events;
    };

    Calendar openCalendar() {
        const auto known = sync.calendar();
        if (!known) return {createCalendar(), {}};
        try {
            return {known->id, list(known->id)};
        } catch (const SyncError& error) {
            if (error.kind != SyncError::Kind::http || error.status != 404) throw;
        }
        if (!known->createdByTacla) throw SyncError(SyncError::Kind::calendarGone);
        return {createCalendar(), {}};
    }

    void perform(const SyncPlan& plan, const std::string& calendar, const Progress& progress) {
        const auto events = eventsUrl(calendar);
        std::size_t sent = 0;
        const auto send = [&](const char* method, const std::string& url, std::optional<std::string> body,
                              const std::string& task) {
            if (progress) progress(sent++, plan.size());
            request(method, url, std::move(body), task);
        };
        const auto event = [&](const std::string& id) { return events + "/" + dravel::percentEncoded(id); };
        for (const auto& patch : plan.patch)
            send("PATCH", event(patch.id), patch.event.patchBody(), patch.event.summary);
        for (const auto& post : plan.post) send("POST", events, post.postBody(), post.summary);
        for (const auto& id : plan.remove) send("DELETE", event(id), std::nullopt, "");
    }
};

CalendarSync::CalendarSync(dravel::GoogleAuth& auth, Preferences& preferences, std::string calendarApi,
                           const std::filesystem::path& lockFolder, Time time, dravel::HttpLimits limits)
    : auth_(auth), preferences_(preferences), calendarApi_(std::move(calendarApi)), lock_(lockFolder / "calendar.lock"),
      time_(std::move(time)), limits_(limits) {
    try {
        known_ = preferences_.calendar();
    } catch (const dravel::FileError&) { // the first run says so
    }
}

CalendarSync::Turn CalendarSync::takeTurn(const std::stop_token& stop, const std::function<void()>& waits) {
    if (const auto pause = pace_.beforeRun(time_.now()); pause > Pace::Wait::zero()) time_.sleep(pause, stop);
    dravel::makeFolders(lock_.parent_path());
    const auto asked = time_.now();
    for (bool said = false;; time_.sleep(turnPause, stop)) {
        throwIfStopped(stop);
        if (auto lock = dravel::tryLock(lock_)) return std::make_shared<dravel::OpenFile>(std::move(*lock));
        const auto waited = time_.now() - asked;
        if (waited >= turnPatience) throw SyncError(SyncError::Kind::busy);
        if (waited >= turnSaidAfter && waits && !std::exchange(said, true)) waits();
    }
}

// What the settings say, unless they lost what this process knows.
std::optional<Preferences::Calendar> CalendarSync::calendar() {
    std::optional<Preferences::Calendar> stored;
    try {
        stored = preferences_.calendar();
    } catch (const dravel::FileError& error) {
        throw SyncError(SyncError::Kind::settingsLost, 0, error.path.string() + " : " + error.description());
    }
    if (known_ && (unstored_ || !stored))
        store();
    else
        known_ = std::move(stored);
    return known_;
}

void CalendarSync::store() {
    preferences_.setCalendar(known_->id, known_->createdByTacla);
    unstored_ = false;
}

// Settings that were lost during the run, for the sake of the next process.
void CalendarSync::giveBackToSettings() {
    try {
        if (known_ && (unstored_ || !preferences_.calendarID())) store();
    } catch (const dravel::FileError&) { // the next run tries again, and says so
    }
}

CalendarSync::Result CalendarSync::run(const Turn&, const Tasks& tasks,
                                       const std::map<std::string, std::string>& renamed, const std::stop_token& stop,
                                       const Progress& progress) {
    struct AtTheEnd {
        CalendarSync& sync;
        ~AtTheEnd() { sync.giveBackToSettings(); }
    } const atTheEnd{*this};
    Pass pass{*this, stop};
    const auto calendar = pass.openCalendar();
    // A file that was cut to nothing must never empty the calendar.
    if (tasks.empty() && !calendar.events.empty()) throw SyncError(SyncError::Kind::emptyFile);
    auto plan = planSync(calendar.events, tasks, renamed, pass.timeZone);
    pass.perform(plan, calendar.id, progress);
    pace_.completed();
    return {static_cast<int>(plan.post.size()), static_cast<int>(plan.patch.size()),
            static_cast<int>(plan.remove.size()), std::move(plan.leftOut)};
}

std::string CalendarSync::Result::hint() const {
    constexpr std::size_t named = 3;
    std::vector<std::string> titles;
    for (const auto& title : leftOut) {
        if (titles.size() < named) titles.push_back(inQuotes(title));
    }
    if (leftOut.size() > named) titles.emplace_back("…");
    return leftOut.empty() ? ""
                           : "Sans événement, car Google Agenda ne connaît pas leur date : " + joined(titles, ", ");
}

}
