#include "DravelKit/Foundation/FileCopies.h"

#include "DravelKit/Foundation/Hash.h"
#include "DravelKit/Foundation/OpenFile.h"
#include "DravelKit/Foundation/WallCalendar.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <set>
#include <tuple>
#include <utility>

namespace dravel::FileCopies {

namespace {

using Path = std::filesystem::path;

constexpr int mostOfOneSecond = 100;
constexpr std::size_t markLength = 8, usualLongestName = 255;

std::string stamp(Instant now) {
    const auto at = wall::read(now);
    const auto second = std::chrono::floor<std::chrono::seconds>(now).time_since_epoch().count() % 60;
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02dh%02dm%02ds", static_cast<int>(at.year),
                  static_cast<int>(at.month), static_cast<int>(at.day), static_cast<int>(at.hour),
                  static_cast<int>(at.minute), static_cast<int>(second));
    return text;
}

// Tells files of one name apart.
std::string markOf(const Path& file) {
    const auto digest = sha256(file.native());
    std::string mark;
    for (std::size_t i = 0; i < markLength / 2; ++i) {
        mark += "0123456789abcdef"[digest[i] >> 4];
        mark += "0123456789abcdef"[digest[i] & 15];
    }
    return mark;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Which file's copy has such a name: its mark, or what stands in its place. None for what is no copy.
std::optional<std::string> fileOf(std::string_view name) {
    constexpr std::string_view form = "0000-00-00 00h00m00s";
    if (name.size() <= form.size()) return {};
    for (std::size_t i = 0; i < form.size(); ++i)
        if (form[i] == '0' ? !isDigit(name[i]) : name[i] != form[i]) return {};
    name.remove_prefix(form.size());
    if (name.starts_with('-')) name.remove_prefix(std::min(name.find_first_not_of("0123456789", 1), name.size()));
    if (!name.starts_with(' ')) return {};
    name.remove_prefix(1);
    const auto mark = name.substr(0, name.find(' '));
    const bool isMark = mark.size() == markLength && mark.find_first_not_of("0123456789abcdef") == mark.npos;
    return std::string(isMark ? mark : name);
}

std::vector<Copy> copiesIn(const Path& folder) {
    std::vector<Copy> copies;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        struct stat status = {};
        auto file = fileOf(entry->path().filename().native());
        if (!file || ::lstat(entry->path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
        copies.push_back(
            {entry->path(), std::move(*file), static_cast<std::uintmax_t>(status.st_size),
             Instant(std::chrono::seconds(status.st_mtim.tv_sec) +
                     std::chrono::floor<std::chrono::milliseconds>(std::chrono::nanoseconds(status.st_mtim.tv_nsec)))});
    }
    return copies;
}

void latestFirst(std::vector<Copy>& copies) {
    std::ranges::sort(copies, std::ranges::greater(), [](const Copy& copy) { return std::pair(copy.made, copy.path); });
}

void fill(const OpenFile& copy, const Path& path, std::string_view text, Instant now) try {
    copy.joinItsFolder();
    copy.write(text);
    const auto since = now.time_since_epoch();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(since);
    const timespec made{seconds.count(), std::chrono::nanoseconds(since - seconds).count()};
    const timespec times[] = {made, made};
    ::futimens(copy.descriptor(), times);
} catch (const FileError&) {
    ::unlink(path.c_str()); // half a copy is none
    throw;
}

// Cut before its ending to what the file system takes, and never within a character.
std::string fittingName(const Path& folder, const std::string& start, const Path& file) {
    const auto longest = ::pathconf(folder.c_str(), _PC_NAME_MAX);
    const auto room = (longest > 0 ? static_cast<std::size_t>(longest) : usualLongestName) - start.size();
    std::string stem = file.stem(), ending = file.extension();
    if (ending.size() > room / 2) ending.clear();
    auto length = std::min(stem.size(), room - ending.size());
    while (length > 0 && length < stem.size() && (static_cast<unsigned char>(stem[length]) & 0xC0) == 0x80) --length;
    return start + stem.substr(0, length) + ending;
}

// The second and later copies of one second are numbered.
Path freshCopy(const Path& folder, const Path& file, std::string_view text, Instant now) {
    for (int nth = 1;; ++nth) {
        const auto number = nth == 1 ? "" : "-" + std::to_string(nth);
        auto path = folder / fittingName(folder, stamp(now) + number + " " + markOf(file) + " ", file);
        try {
            const OpenFile copy(path, O_WRONLY | O_CREAT | O_EXCL, 0600);
            fill(copy, path, text, now);
            return path;
        } catch (const FileError& error) {
            if (error.code != EEXIST || nth == mostOfOneSecond) throw;
        }
    }
}

// What one copy is enough for: a moment of today, an hour, a day.
auto turnOf(const Copy& copy, Instant now) {
    const auto made = wall::read(copy.made), today = wall::read(now);
    const bool isOfToday = std::tie(made.year, made.month, made.day) == std::tie(today.year, today.month, today.day);
    const bool eachHour = now - copy.made <= hourly;
    return std::tuple(copy.of, made.year, made.month, made.day, eachHour ? made.hour : -1,
                      isOfToday ? copy.path : Path());
}

std::uintmax_t totalOf(const std::vector<Copy>& copies) {
    std::uintmax_t bytes = 0;
    for (const auto& copy : copies) bytes += copy.bytes;
    return bytes;
}

void remove(const std::vector<Copy>& copies) {
    for (const auto& copy : copies) ::unlink(copy.path.c_str());
}

}

std::vector<Copy> surplus(std::vector<Copy> copies, Instant now, const std::optional<Copy>& joining) {
    latestFirst(copies);
    std::set<decltype(turnOf(copies[0], now))> turns;
    std::set<std::string> files;
    std::uintmax_t bytes = 0;
    if (joining) {
        files.insert(joining->of);
        bytes = joining->bytes;
    }
    std::vector<Copy> gone, latest, others;
    for (auto& copy : copies) {
        const bool stays = now - copy.made <= oldest && turns.insert(turnOf(copy, now)).second;
        auto& list = !stays ? gone : files.insert(copy.of).second ? latest : others;
        list.push_back(std::move(copy));
    }
    for (const auto& copy : latest) bytes += copy.bytes;
    for (auto& copy : others) {
        bytes += copy.bytes;
        if (bytes > mostBytes) gone.push_back(std::move(copy));
    }
    return gone;
}

std::optional<Path> keep(const Path& folder, const Path& file, std::string_view text, Instant now) noexcept try {
    if (text.size() > mostBytes) return {};
    makeFolders(folder);
    remove(surplus(copiesIn(folder), now, Copy{{}, markOf(file), text.size(), now}));
    if (totalOf(copiesIn(folder)) + text.size() > mostBytes) return {}; // the latest ones of other lists
    return freshCopy(folder, file, text, now);
} catch (const std::exception&) {
    return {};
}

void prune(const Path& folder, Instant now) noexcept try {
    remove(surplus(copiesIn(folder), now));
} catch (const std::exception&) { // next time
}

std::vector<Copy> of(const Path& folder, const Path& file) {
    auto copies = copiesIn(folder);
    std::erase_if(copies, [mark = markOf(file)](const Copy& copy) { return copy.of != mark; });
    latestFirst(copies);
    return copies;
}

}
