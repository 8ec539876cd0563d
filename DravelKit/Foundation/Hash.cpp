#include "DravelKit/Foundation/Hash.h"

#include <nettle/base64.h>
#include <nettle/memops.h>
#include <nettle/sha2.h>

#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <vector>

namespace dravel {

std::array<std::uint8_t, 32> sha256(std::string_view bytes) {
    sha256_ctx context;
    sha256_init(&context);
    sha256_update(&context, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
    std::array<std::uint8_t, 32> digest;
    sha256_digest(&context, digest.size(), digest.data());
    return digest;
}

std::string base64Url(std::span<const std::uint8_t> bytes) {
    base64_encode_ctx context;
    base64url_encode_init(&context);
    std::string text(BASE64_ENCODE_LENGTH(bytes.size()) + BASE64_ENCODE_FINAL_LENGTH, '\0');
    auto length = base64_encode_update(&context, text.data(), bytes.size(), bytes.data());
    length += base64_encode_final(&context, text.data() + length);
    text.resize(length);
    std::erase(text, '=');
    return text;
}

std::string randomUrlSafe(std::size_t byteCount) {
    std::vector<std::uint8_t> bytes(byteCount);
    constexpr std::size_t atOnce = 256; // the most that getentropy gives
    for (std::size_t done = 0; done < byteCount; done += atOnce)
        if (::getentropy(bytes.data() + done, std::min(atOnce, byteCount - done)) != 0)
            throw std::system_error(errno, std::generic_category(), "getentropy");
    return base64Url(bytes);
}

bool constantTimeEqual(std::string_view a, std::string_view b) {
    return a.size() == b.size() && memeql_sec(a.data(), b.data(), a.size()) != 0;
}

}
