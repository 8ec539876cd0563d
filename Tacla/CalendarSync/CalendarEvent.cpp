#include "Tacla/CalendarSync/CalendarEvent.h"

#include "DravelKit/Foundation/Json.h"
#include "Tacla/TaskList/TaskFile.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

namespace tacla {

namespace {

using Json = nlohmann::json;

EventTime wholeDay(Day day) { return {day.description(), std::nullopt}; }

std::string wallClock(Instant moment) {
    return Day::of(moment).description() + "T" + Clock::of(moment).description() + ":00";
}

std::string halfAnHourLater(Day day, Clock clock) {
    constexpr std::int64_t hour = 60, wholeDay = 24 * hour;
    const auto minutes = clock.hour * hour + clock.minute + 30;
    const Clock end{minutes % wholeDay / hour, minutes % hour};
    return day.plusDays(minutes / wholeDay).description() + "T" + end.description() + ":00";
}

std::string universalClock(Instant moment) {
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const auto minutes = std::chrono::floor<std::chrono::minutes>(moment - day).count();
    return Day{static_cast<int>(date.year()), static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day())}
               .description() +
           "T" + Clock{minutes / 60, minutes % 60}.description() + ":00";
}

std::pair<EventTime, EventTime> timed(Instant moment, const std::string& timeZone) {
    // Also where the zone in use has no name: its wall clock would say something else there.
    if (timeZone == "UTC")
        return {{universalClock(moment), timeZone}, {universalClock(moment + std::chrono::minutes(30)), timeZone}};
    const auto start = wallClock(moment);
    auto end = wallClock(moment + std::chrono::minutes(30));
    // In the night when the clock is set back, half an hour later may read earlier, and the service refuses such an
    // end.
    if (end <= start) end = halfAnHourLater(Day::of(moment), Clock::of(moment));
    return {{start, timeZone}, {std::move(end), timeZone}};
}

std::pair<EventTime, EventTime> allDay(Day named) {
    const Day day = Day::of(named.date()); // 30 February is 1 or 2 March
    return {wholeDay(day), wholeDay(day.plusDays(1))};
}

// "2025-…" as opposed to "0000-…" and "10000-…".
bool hasServiceableYear(const EventTime& time) { return time.text.find('-') == 4 && !time.text.starts_with("0000"); }

Json timeBody(const EventTime& time) {
    return time.timeZone ? Json{{"dateTime", time.text}, {"timeZone", *time.timeZone}} : Json{{"date", time.text}};
}

Json timePatch(const EventTime& time) {
    Json patch{{"date", nullptr}, {"dateTime", nullptr}, {"timeZone", nullptr}};
    patch.update(timeBody(time));
    return patch;
}

Json body(const CalendarEvent& event, Json start, Json end) {
    return {{"summary", event.summary},
            {"description", event.description},
            {"start", std::move(start)},
            {"end", std::move(end)},
            {"transparency", "transparent"},
            {"visibility", "private"},
            {"reminders", {{"useDefault", false}, {"overrides", Json::array()}}},
            {"extendedProperties", {{"private", {{"tacla", "1"}, {"key", event.key}, {"sig", event.signature()}}}}}};
}

std::optional<Managed> managedEvent(const Json& event) {
    // One that is gone, or one day of a series that the user made of our event: the series itself is listed as well.
    if (dravel::jsonString(event, "status") == "cancelled" || !dravel::jsonMember(event, "recurringEventId").is_null())
        return std::nullopt;
    const auto id = dravel::jsonString(event, "id");
    const Json& properties = dravel::jsonMember(dravel::jsonMember(event, "extendedProperties"), "private");
    const bool ours = properties.is_object() &&
                      std::all_of(properties.begin(), properties.end(), [](const Json& p) { return p.is_string(); });
    const auto key = ours ? dravel::jsonString(properties, "key") : std::nullopt;
    if (!id || !key) return std::nullopt;
    return Managed{*id, *key, dravel::jsonString(properties, "sig").value_or("")};
}

}

std::string EventTime::json() const {
    return timeZone ? R"({"dateTime":")" + text + R"(","timeZone":")" + *timeZone + R"("})"
                    : R"({"date":")" + text + R"("})";
}

std::string CalendarEvent::signature() const {
    return TaskFile::hash(summary + "|" + start.json() + "|" + end.json() + "|" + description);
}

std::string CalendarEvent::postBody() const { return body(*this, timeBody(start), timeBody(end)).dump(); }

std::string CalendarEvent::patchBody() const { return body(*this, timePatch(start), timePatch(end)).dump(); }

std::optional<CalendarEvent> calendarEvent(const TaskItem& task, const std::string& timeZone) {
    if (!task.day) return std::nullopt;
    auto [start, end] = task.time ? timed(*task.at(), timeZone) : allDay(*task.day);
    if (!hasServiceableYear(start) || !hasServiceableYear(end)) return std::nullopt;
    return CalendarEvent{
        .summary = task.done ? "✅ " + TaskFile::dropStrongMark(task.title) : task.title,
        .description =
            (task.due ? "Échéance d'origine : " + task.due->description() + "\n" : "") + std::string(managedByTacla),
        .start = std::move(start),
        .end = std::move(end),
        .key = task.key,
    };
}

std::optional<ListingPage> readListingPage(std::string_view answer) {
    const auto object = dravel::jsonObject(answer);
    if (!object) return std::nullopt;
    const Json& items = dravel::jsonMember(*object, "items");
    if (!items.is_array() && !items.is_null()) return std::nullopt;
    ListingPage page;
    for (const Json& event : items) {
        if (auto managed = managedEvent(event)) page.managed.push_back(std::move(*managed));
    }
    page.nextPageToken = dravel::jsonString(*object, "nextPageToken");
    return page;
}

std::optional<std::string> readCalendarID(std::string_view answer) {
    const auto object = dravel::jsonObject(answer);
    return object ? dravel::jsonString(*object, "id") : std::nullopt;
}

std::string serviceMessage(std::string_view answer) {
    const auto object = dravel::jsonObject(answer);
    return object ? dravel::jsonString(dravel::jsonMember(*object, "error"), "message").value_or("") : "";
}

bool namesRateLimit(std::string_view answer) {
    const auto object = dravel::jsonObject(answer);
    if (!object) return false;
    const Json& errors = dravel::jsonMember(dravel::jsonMember(*object, "error"), "errors");
    return std::any_of(errors.begin(), errors.end(), [](const Json& error) {
        const auto reason = dravel::jsonString(error, "reason");
        return reason == "rateLimitExceeded" || reason == "userRateLimitExceeded" || reason == "quotaExceeded";
    });
}

}
