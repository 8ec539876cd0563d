#pragma once

#include "DravelKit/Foundation/Text.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

// What each fuzzer does with the bytes; it ends the program where something does not hold.
void fuzz(std::string_view bytes);

inline void require(bool holds) {
    if (!holds) std::abort();
}

extern "C" [[gnu::used]] inline int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz({reinterpret_cast<const char*>(data), size}), 0;
}
