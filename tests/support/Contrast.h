#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tacla::testing {

// The contrast ratio of two colours 0xRRGGBB, as WCAG 2 defines it.
inline double contrast(std::uint32_t a, std::uint32_t b) {
    const auto luminance = [](std::uint32_t hex) {
        const auto linear = [hex](int shift) {
            const double value = ((hex >> shift) & 0xFF) / 255.0;
            return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(16) + 0.7152 * linear(8) + 0.0722 * linear(0);
    };
    const auto [low, high] = std::minmax({luminance(a), luminance(b)});
    return (high + 0.05) / (low + 0.05);
}

}
