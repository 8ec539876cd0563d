#include "tests/fuzz/Fuzzer.h"
#include "tests/support/TemporaryFolder.h"

// Feeds the fuzzer each file of a folder.
int main(int argc, char** argv) {
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argc == 2 ? argv[1] : "")) {
        fuzz(tacla::testing::readBytes(entry.path()));
        ++files;
    }
    return files == 0;
}
