#include "DravelKit/Foundation/WallNames.h"

#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>

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

// "Europe/Paris" of "/usr/share/zoneinfo/Europe/Paris"; "" of any other path.
std::string zoneOfPath(const std::string& path) {
    const auto at = path.find(zoneFolder);
    return at == path.npos ? std::string() : path.substr(at + zoneFolder.size());
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
    return std::filesystem::is_regular_file("/usr/share/zoneinfo/" + value, error) ? value : std::string();
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
    if (!identifier.empty()) return identifier;
    // A rule without a name, or a copy in place of the link: ICU finds out which zone has such rules.
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString detected;
    zone->getID(detected).toUTF8String(identifier);
    return identifier;
}

}
