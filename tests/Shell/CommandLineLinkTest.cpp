#include "Tacla/Shell/CommandLineLink.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace tacla;
namespace fs = std::filesystem;

namespace {

struct Case {
    const char* what;
    const char* searchPath;
    std::string present; // the one entry that exists
    bool made;
};

}

TEST(CommandLineLink, isProposedWhereNoTerminalFindsTheProgram) {
    const Case cases[] = {
        {"nothing there", "/usr/bin:/bin", "", true},
        {"an empty search path", "", "", true},
        {"found on the search path", "/usr/bin:/bin", "/bin/tacla", false},
        {"something stands in its place", "/usr/bin", "/home/c/.local/bin/tacla", false},
        {"elsewhere than on the search path", "/usr/bin", "/opt/tacla", true},
    };
    for (const auto& c : cases) {
        const auto link = commandLineLink("/home/c", c.searchPath, "/opt/tacla/bin/tacla",
                                          [&](const fs::path& path) { return path == c.present; });
        EXPECT_EQ(link.has_value(), c.made) << c.what;
        const CommandLineLink expected{"/home/c/.local/bin/tacla", "/opt/tacla/bin/tacla"};
        EXPECT_EQ(link.value_or(expected), expected) << c.what;
    }
}

TEST(CommandLineLink, isMadeOnceAndReplacesNothing) {
    const tacla::testing::TemporaryFolder home;
    const auto propose = [&](const char* program) {
        return commandLineLink(home.path(), "", program, existsOrDangles);
    };
    makeCommandLineLink(propose("/opt/old/tacla"));
    const auto made = home / ".local/bin/tacla";
    EXPECT_EQ(fs::read_symlink(made), "/opt/old/tacla");
    EXPECT_FALSE(propose("/opt/new/tacla")) << "a dangling link is kept too";
    makeCommandLineLink(CommandLineLink{made, "/opt/new/tacla"});
    EXPECT_EQ(fs::read_symlink(made), "/opt/old/tacla");
}
