#pragma once

#include <bit>
#include <cstdint>
#include <span>
#include <vector>

namespace tacla {

// Of each digest, which of its kind it is: 1 for the first, 2 for the next that equals it. A flat table of where each
// was seen last, in place of a map, so that reloading 100,000 tasks does not wait for memory at each title.
inline std::vector<std::uint32_t> numbered(std::span<const std::uint64_t> digests) {
    const auto mask = std::bit_ceil(2 * digests.size() + 1) - 1; // at least half of the places stay free
    std::vector<std::uint32_t> lastSeen(mask + 1);               // the position from 1, 0 for a free place
    std::vector<std::uint32_t> numbers;
    numbers.reserve(digests.size());
    for (const auto digest : digests) {
        auto place = digest & mask;
        while (lastSeen[place] != 0 && digests[lastSeen[place] - 1] != digest) place = (place + 1) & mask;
        const auto before = lastSeen[place];
        numbers.push_back(before == 0 ? 1 : numbers[before - 1] + 1);
        lastSeen[place] = static_cast<std::uint32_t>(numbers.size());
    }
    return numbers;
}

}
