#pragma once

#include "Tacla/TaskList/TaskItem.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Tasks as events of the Calendar API, and what the API answers about them.
namespace tacla {

inline constexpr std::string_view managedByTacla =
    "Géré par Tacla : modifier la tâche dans Tacla ou dans son fichier, pas l'événement.";

// A day or a moment of the wall clock, as the Calendar API writes it.
struct EventTime {
    std::string text;                    // "2025-03-04" or "2025-03-04T14:30:00"
    std::optional<std::string> timeZone; // IANA identifier; none for a whole day

    // {"date":"2025-03-04"} or {"dateTime":"2025-03-04T14:30:00","timeZone":"Europe/Paris"}
    std::string json() const;

    bool operator==(const EventTime&) const = default;
};

// What one dated task looks like in the calendar.
struct CalendarEvent {
    std::string summary, description;
    EventTime start, end;
    std::string key; // of the task

    // Changes exactly when something that the user sees changes. Stored with the event and compared ever after, so its
    // spelling must never change.
    std::string signature() const;

    std::string postBody() const;
    // The service merges start and end into what it has and refuses a date beside a dateTime: the members of the other
    // form are sent as null.
    std::string patchBody() const;

    bool operator==(const CalendarEvent&) const = default;
};

// None for a task without a day, or on one that the service does not know: of the year 0, or ending after 9999. An
// event with a time lasts half an hour.
std::optional<CalendarEvent> calendarEvent(const TaskItem&, const std::string& timeZone);

// An event of the calendar that carries our marker.
struct Managed {
    std::string id, key;
    std::string sig; // "" when the event has none

    bool operator==(const Managed&) const = default;
};

struct ListingPage {
    std::vector<Managed> managed; // events without our marker or an identifier are left out
    std::optional<std::string> nextPageToken;
};

// None when the answer is not a whole listing: nothing may be planned from it.
std::optional<ListingPage> readListingPage(std::string_view answer);

// The identifier of a calendar that was just created.
std::optional<std::string> readCalendarID(std::string_view answer);

// What an error answer says in words, "" when it has none.
std::string serviceMessage(std::string_view answer);

// Whether an error answer says that too many requests came, as opposed to a request that is not allowed at all.
bool namesRateLimit(std::string_view answer);

}
