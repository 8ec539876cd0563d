#include "tests/TaskList/EditChecks.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (dravel::isValidUtf8(text) && !tacla::testing::wrongEdit(text, "Pain", {2025, 3, 5}).empty()) std::abort();
    return 0;
}
