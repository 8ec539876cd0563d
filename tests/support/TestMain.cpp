#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

#ifdef QT_WIDGETS_LIB
#include "DravelKit/DravelUI/Look.h"

#include <QApplication>
#endif

// Every test program sees the same world: Paris time, a plain locale, one seed, folders of its own and no screen.
int main(int argc, char** argv) {
    const tacla::testing::TemporaryFolder home;
    for (const auto& [variable, folder] : {std::pair{"HOME", "."},
                                           {"XDG_CONFIG_HOME", "config"},
                                           {"XDG_DATA_HOME", "data"},
                                           {"XDG_STATE_HOME", "state"},
                                           {"XDG_RUNTIME_DIR", "runtime"}}) {
        const auto path = home / folder;
        std::filesystem::create_directories(path);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        ::setenv(variable, path.c_str(), 1);
    }
    for (const auto& [variable, value] : {std::pair{"TZ", "Europe/Paris"},
                                          {"LC_ALL", "C.UTF-8"},
                                          {"QT_QPA_PLATFORM", "offscreen"},
                                          {"QT_ACCESSIBILITY", "1"}})
        ::setenv(variable, value, 1);
    for (const char* variable :
         {"TACLA_FILE", "TACLA_GOOGLE_BASE", "QT_SCALE_FACTOR", "QT_STYLE_OVERRIDE", "XDG_CURRENT_DESKTOP"})
        ::unsetenv(variable);
    ::testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(random_seed, 20250304);
#ifdef QT_WIDGETS_LIB
    QApplication application(argc, argv);
    dravel::installLook(application, dravel::Appearance::light);
#endif
    return RUN_ALL_TESTS();
}
