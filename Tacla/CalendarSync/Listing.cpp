#include "Tacla/CalendarSync/Listing.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tacla {

namespace {

using Json = nlohmann::json;

std::optional<Json> readObject(std::string_view text) {
    auto object = Json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (!object.is_object()) return std::nullopt;
    return object;
}

const Json& member(const Json& value, const char* name) {
    static const Json none;
    const auto found = value.find(name); // end() for anything but an object
    return found == value.end() ? none : *found;
}

std::optional<std::string> stringMember(const Json& value, const char* name) {
    const Json& found = member(value, name);
    return found.is_string() ? std::optional(found.get<std::string>()) : std::nullopt;
}

std::optional<Managed> managedEvent(const Json& event) {
    const auto id = stringMember(event, "id");
    const Json& properties = member(member(event, "extendedProperties"), "private");
    const bool ours = properties.is_object() &&
                      std::all_of(properties.begin(), properties.end(), [](const Json& p) { return p.is_string(); });
    const auto key = ours ? stringMember(properties, "key") : std::nullopt;
    if (!id || !key) return std::nullopt;
    return Managed{*id, *key, stringMember(properties, "sig").value_or("")};
}

}

std::optional<ListingPage> readListingPage(std::string_view answer) {
    const auto object = readObject(answer);
    if (!object) return std::nullopt;
    const Json& items = member(*object, "items");
    if (!items.is_array() && !items.is_null()) return std::nullopt;
    ListingPage page;
    for (const Json& event : items) {
        if (auto managed = managedEvent(event)) page.managed.push_back(std::move(*managed));
    }
    page.nextPageToken = stringMember(*object, "nextPageToken");
    return page;
}

std::optional<std::string> readCalendarID(std::string_view answer) {
    const auto object = readObject(answer);
    return object ? stringMember(*object, "id") : std::nullopt;
}

bool namesRateLimit(std::string_view answer) {
    const auto object = readObject(answer);
    if (!object) return false;
    const Json& errors = member(member(*object, "error"), "errors");
    return std::any_of(errors.begin(), errors.end(), [](const Json& error) {
        const auto reason = stringMember(error, "reason");
        return reason == "rateLimitExceeded" || reason == "userRateLimitExceeded" || reason == "quotaExceeded";
    });
}

}
