#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace dravel {

// SHA-256 (FIPS 180-4) of the bytes.
std::array<std::uint8_t, 32> sha256(std::string_view bytes);

// Base64 with the URL alphabet and no padding (RFC 4648, section 5).
std::string base64Url(std::span<const std::uint8_t> bytes);

// That many bytes of the system's secure random generator, as base64Url.
std::string randomUrlSafe(std::size_t byteCount);

// Takes the same time wherever the first difference stands.
bool constantTimeEqual(std::string_view a, std::string_view b);

}
