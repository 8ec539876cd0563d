#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

// Every test program sees the same world: Paris time, a plain locale, one seed, and folders of its own.
int main(int argc, char** argv) {
    ::setenv("TZ", "Europe/Paris", 1);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    const tacla::testing::TemporaryFolder home;
    for (const auto& [variable, folder] : {std::pair{"HOME", "."},
                                           {"XDG_CONFIG_HOME", "config"},
                                           {"XDG_DATA_HOME", "data"},
                                           {"XDG_STATE_HOME", "state"},
                                           {"XDG_RUNTIME_DIR", "runtime"}}) {
        const auto path = home / folder;
        std::filesystem::create_directories(path);
        ::setenv(variable, path.c_str(), 1);
    }
    ::unsetenv("TACLA_FILE");
    ::unsetenv("TACLA_GOOGLE_BASE");
    ::testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(random_seed, 20250304);
    return RUN_ALL_TESTS();
}
