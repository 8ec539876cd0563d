#include "tests/support/TemporaryFolder.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Feeds the fuzzer each file of a folder; the fuzzer aborts when something is wrong.
int main(int argc, char** argv) {
    if (argc != 2) return 2;
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        const auto bytes = tacla::testing::readBytes(entry.path());
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++files;
    }
    return files == 0;
}
