#include "DravelKit/Foundation/WallNames.h"

#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace dravel::wall {

namespace {

void check(UErrorCode status) {
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
}

std::unique_ptr<icu::SimpleDateFormat> makeFrenchFormat() {
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>("EEEE d MMMM", icu::Locale::getFrance(), status);
    auto calendar =
        std::make_unique<icu::GregorianCalendar>(icu::TimeZone::getGMT()->clone(), icu::Locale::getFrance(), status);
    check(status);
    calendar->setGregorianChange(-8.64e15, status); // proleptic: no Julian days
    check(status);
    format->adoptCalendar(calendar.release());
    return format;
}

constexpr std::string_view zoneFolder = "zoneinfo/";

// "Europe/Paris" of "/usr/share/zoneinfo/Europe/Paris", and of the same in the folders of other leap seconds; "" of any
// other path.
std::string zoneOfPath(const std::string& path) {
    const auto at = path.find(zoneFolder);
    if (at == path.npos) return {};
    auto zone = path.substr(at + zoneFolder.size());
    for (const std::string_view variant : {"posix/", "right/"}) {
        if (zone.starts_with(variant)) zone.erase(0, variant.size());
    }
    return zone;
}

// The same of a link to such a path.
std::string zoneOfFile(const std::string& path) {
    std::error_code error;
    auto zone = zoneOfPath(path);
    return zone.empty() ? zoneOfPath(std::filesystem::read_symlink(path, error).string()) : zone;
}

std::string zoneOfVariable(std::string value) {
    if (value.starts_with(':')) value.erase(0, 1);
    if (value.empty()) return "UTC";
    if (value.starts_with('/')) return zoneOfFile(value);
    std::error_code error;
    const auto file = "/usr/share/zoneinfo/" + value;
    return std::filesystem::is_regular_file(file, error) ? zoneOfPath(file) : std::string();
}

// None when ICU, and with it the rest of the world, does not know the name.
std::unique_ptr<icu::TimeZone> zoneNamed(const icu::UnicodeString& name) {
    std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(name));
    if (*zone == icu::TimeZone::getUnknown() || name.startsWith("SystemV/")) return {};
    return zone;
}

// Whether it reads like the C library's zone, on which everything else goes by, in the years that people plan.
bool readsLikeOurs(const icu::TimeZone& zone) {
    constexpr std::time_t week = std::time_t{7} * 24 * 3600, first = 1'735'689'600; // 2025
    constexpr auto last = first + 624 * week;
    for (auto time = first; time < last; time += week) {
        std::tm local{};
        ::localtime_r(&time, &local);
        UErrorCode status = U_ZERO_ERROR;
        std::int32_t raw = 0, summer = 0;
        zone.getOffset(static_cast<UDate>(time) * 1000, 0, raw, summer, status);
        if (U_FAILURE(status) || (raw + summer) / 1000 != local.tm_gmtoff) return false;
    }
    return true;
}

// A zone of the same rules, for a rule without a name, a copy in place of the link, or a name that nobody knows; UTC
// when there is none.
std::string zoneOfTheSameRules() {
    const std::unique_ptr<icu::TimeZone> detected(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString own;
    detected->getID(own);
    std::vector<icu::UnicodeString> candidates{own, "UTC", "Europe/Paris"};
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::StringEnumeration> all(
        icu::TimeZone::createTimeZoneIDEnumeration(UCAL_ZONE_TYPE_CANONICAL_LOCATION, nullptr, nullptr, status));
    check(status);
    while (const auto* name = all->snext(status)) candidates.push_back(*name);
    for (const auto& name : candidates) {
        const auto zone = zoneNamed(name);
        std::string utf8;
        if (zone && readsLikeOurs(*zone)) return name.toUTF8String(utf8);
    }
    return "UTC";
}

}

std::string frenchLongDay(std::int64_t year, std::int64_t month, std::int64_t day) {
    using namespace std::chrono;
    thread_local const auto format = makeFrenchFormat(); // costly to make, and of one thread
    const sys_days first = std::chrono::year(static_cast<int>(year)) / static_cast<int>(month) / 1;
    const milliseconds noon = (first + days(day - 1)).time_since_epoch() + hours(12);
    icu::UnicodeString label;
    std::string utf8;
    format->format(static_cast<UDate>(noon.count()), label).toUTF8String(utf8);
    return utf8;
}

std::string zoneIdentifier() {
    const char* variable = std::getenv("TZ");
    auto identifier = variable ? zoneOfVariable(variable) : zoneOfFile("/etc/localtime");
    const bool known = !identifier.empty() && zoneNamed(icu::UnicodeString::fromUTF8(identifier));
    return known ? identifier : zoneOfTheSameRules();
}

}
