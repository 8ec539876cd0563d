#include "tests/TaskList/EditChecks.h"
#include "tests/fuzz/Fuzzer.h"

void fuzz(std::string_view text) {
    require(!dravel::isValidUtf8(text) || tacla::testing::wrongEdit(std::string(text), "Pain", {2025, 3, 5}).empty());
}
