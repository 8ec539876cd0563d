#pragma once

#include "DravelKit/Foundation/Instant.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A folder of copies of files as they were before each change: all of today's, the last one of each hour of a week, and
// the last one of each day of thirty. What else stands in that folder is left alone.
namespace dravel::FileCopies {

inline constexpr std::uintmax_t mostBytes = 200'000'000; // of all copies together
inline constexpr std::chrono::days oldest{30}, hourly{7};

struct Copy {
    std::filesystem::path path;
    std::string of; // which file's it is: two files of one name are told apart
    std::uintmax_t bytes;
    Instant made;
};

// Those to remove once a copy (for pruning: none) has joined. Each file's latest copy stays as long as it is not too
// old.
std::vector<Copy> surplus(std::vector<Copy>, Instant now, const std::optional<Copy>& joining = {});

// Keeps the text as "<date> <time> <mark of the file> <name of the file>" in the folder, which is made (0700) where
// missing. None when the copy could not be kept: that must never stand in the way of a save.
std::optional<std::filesystem::path> keep(const std::filesystem::path& folder, const std::filesystem::path& file,
                                          std::string_view text, Instant now) noexcept;

// Removes the copies that are no longer to be kept.
void prune(const std::filesystem::path& folder, Instant now) noexcept;

// The copies of one file, the latest first.
std::vector<Copy> of(const std::filesystem::path& folder, const std::filesystem::path& file);

}
