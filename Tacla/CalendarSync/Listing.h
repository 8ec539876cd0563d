#pragma once

#include "Tacla/CalendarSync/SyncPlan.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Reading what the Calendar API answers.
namespace tacla {

struct ListingPage {
    std::vector<Managed> managed; // events without our marker or an identifier are left out
    std::optional<std::string> nextPageToken;
};

// None when the answer is not a whole listing: nothing may be planned from it.
std::optional<ListingPage> readListingPage(std::string_view answer);

// The identifier of a calendar that was just created.
std::optional<std::string> readCalendarID(std::string_view answer);

// Whether an error answer says that too many requests came, as opposed to a request that is not allowed at all.
bool namesRateLimit(std::string_view answer);

}
