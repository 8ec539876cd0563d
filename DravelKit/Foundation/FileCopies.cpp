#include "DravelKit/Foundation/FileCopies.h"

#include "DravelKit/Foundation/OpenFile.h"
#include "DravelKit/Foundation/WallCalendar.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <utility>

namespace dravel::FileCopies {

namespace {

using Path = std::filesystem::path;

constexpr int mostOfOneSecond = 100;

std::string stamp(Instant now) {
    const auto at = wall::read(now);
    const auto second = std::chrono::floor<std::chrono::seconds>(now).time_since_epoch().count() % 60;
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02dh%02dm%02ds", static_cast<int>(at.year),
                  static_cast<int>(at.month), static_cast<int>(at.day), static_cast<int>(at.hour),
                  static_cast<int>(at.minute), static_cast<int>(second));
    return text;
}

std::vector<Copy> copiesIn(const Path& folder) {
    std::vector<Copy> copies;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        struct stat status {};
        if (::lstat(entry->path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
        copies.push_back(
            {entry->path(), static_cast<std::uintmax_t>(status.st_size),
             Instant(std::chrono::seconds(status.st_mtim.tv_sec) +
                     std::chrono::floor<std::chrono::milliseconds>(std::chrono::nanoseconds(status.st_mtim.tv_nsec)))});
    }
    return copies;
}

void fill(const OpenFile& copy, const Path& path, std::string_view text, Instant now) try {
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

// The second and later copies of one second are numbered.
Path freshCopy(const Path& folder, const Path& file, std::string_view text, Instant now) {
    for (int nth = 1;; ++nth) {
        const auto number = nth == 1 ? "" : "-" + std::to_string(nth);
        auto path = folder / (stamp(now) + number + " " + file.filename().string());
        try {
            const OpenFile copy(path, O_WRONLY | O_CREAT | O_EXCL, 0600);
            fill(copy, path, text, now);
            return path;
        } catch (const FileError& error) {
            if (error.code != EEXIST || nth == mostOfOneSecond) throw;
        }
    }
}

void remove(const std::vector<Copy>& copies) {
    for (const auto& copy : copies) ::unlink(copy.path.c_str());
}

}

std::vector<Copy> surplus(std::vector<Copy> copies, Instant now, std::optional<std::uintmax_t> joining) {
    std::ranges::sort(copies, std::ranges::greater(), [](const Copy& copy) { return std::pair(copy.made, copy.path); });
    std::size_t count = joining ? 1 : 0;
    std::uintmax_t bytes = joining.value_or(0);
    std::erase_if(copies, [&](const Copy& copy) {
        bytes += copy.bytes;
        return ++count <= mostCopies && bytes <= mostBytes && now - copy.made <= oldest;
    });
    return copies;
}

std::optional<Path> keep(const Path& folder, const Path& file, std::string_view text, Instant now) noexcept try {
    if (text.size() > mostBytes) return {};
    makeFolders(folder);
    remove(surplus(copiesIn(folder), now, text.size()));
    return freshCopy(folder, file, text, now);
} catch (const std::exception&) {
    return {};
}

void prune(const Path& folder, Instant now) noexcept try {
    remove(surplus(copiesIn(folder), now));
} catch (const std::exception&) { // next time
}

}
