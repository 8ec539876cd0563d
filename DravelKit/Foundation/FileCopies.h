#pragma once

#include "DravelKit/Foundation/Instant.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

// A folder of copies of a file as it was before each change. For the user's eyes: no program reads them back.
namespace dravel::FileCopies {

inline constexpr std::size_t mostCopies = 50;
inline constexpr std::uintmax_t mostBytes = 20 << 20; // of all copies together
inline constexpr std::chrono::days oldest{30};

struct Copy {
    std::filesystem::path path;
    std::uintmax_t bytes;
    Instant made;
};

// Those to remove, the oldest ones, so that the limits hold once a copy of that many bytes has joined.
std::vector<Copy> surplus(std::vector<Copy>, Instant now, std::optional<std::uintmax_t> joining = {});

// Keeps the text as "<date> <time> <name of the file>" in the folder, which is made (0700) where missing. None when the
// copy could not be kept: that must never stand in the way of a save.
std::optional<std::filesystem::path> keep(const std::filesystem::path& folder, const std::filesystem::path& file,
                                          std::string_view text, Instant now) noexcept;

// Removes the copies that have become too old.
void prune(const std::filesystem::path& folder, Instant now) noexcept;

}
