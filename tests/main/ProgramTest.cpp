#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>

using namespace tacla::testing;
using namespace std::string_literals;

namespace {

struct Shell {
    std::string output; // and errors
    int status;
};

// The program as a user starts it.
Shell shell(const std::string& command) {
    FILE* const pipe = ::popen((command + " 2>&1").c_str(), "r");
    std::string output;
    std::array<char, 4096> buffer;
    while (const auto count = std::fread(buffer.data(), 1, buffer.size(), pipe)) output.append(buffer.data(), count);
    return {output, WEXITSTATUS(::pclose(pipe))};
}

const std::string program = TACLA_PROGRAM;

class Program : public ::testing::Test {
  public:
    Program() {
        writeBytes(file, "- [ ] Pain · 2025-03-06\n");
        ::setenv("TACLA_FILE", file.c_str(), 1);
    }
    ~Program() override { ::unsetenv("TACLA_FILE"); }

    TemporaryFolder folder;
    std::filesystem::path file = folder / "taches.md";
};

}

TEST_F(Program, saysWhenItsOutputGoesNowhere) {
    EXPECT_EQ(shell(program + " list").output, "🔴 Pain · 2025-03-06\n");
    const auto pipe = (folder / "pipe").string();
    const std::pair<std::string, const char*> expected[] = {
        {"{ " + program + " list > /dev/full; }", "Il n'y a plus de place sur le disque"},
        {"{ " + program + " list >&-; }", "Le flux est fermé"},
        {"mkfifo " + pipe + "; exec 3<>" + pipe + "; exec 4>" + pipe + "; exec 3>&-; { " + program + " list >&4; }",
         "Plus personne ne lit la sortie"},
    };
    for (const auto& [command, reason] : expected) {
        const auto [output, status] = shell(command);
        EXPECT_EQ(output, "tacla : impossible d'écrire sur la sortie : "s + reason + "\n");
        EXPECT_EQ(status, 1);
    }
}

TEST_F(Program, saysWhatToInstallForAMissingModule) {
    std::filesystem::create_directories(folder / "bin");
    std::filesystem::copy_file(program, folder / "bin/tacla");
    const auto alone = (folder / "bin/tacla").string();
    EXPECT_EQ(shell(alone).output, "tacla : l'application de bureau n'est pas installée (paquet tacla-desktop)\n");
    EXPECT_EQ(shell(alone + " list").output, "🔴 Pain · 2025-03-06\n");

    std::filesystem::create_directories(folder / "lib/tacla");
    writeBytes(folder / "lib/tacla/tacla_desktop.so", "no library");
    const auto broken = shell(alone + " --notify-test");
    EXPECT_TRUE(broken.output.starts_with("tacla : impossible de charger " + folder.path().string())) << broken.output;
    EXPECT_EQ(broken.status, 1);
}

TEST_F(Program, loadsNeitherWindowNorNetworkForTheTerminal) {
    const auto libraries = shell("ldd " + program).output;
    EXPECT_NE(libraries.find("libc.so"), libraries.npos);
    for (const auto* heavy : {"libQt", "libcurl", "libsecret", "libglib", "libcrypto"})
        EXPECT_EQ(libraries.find(heavy), libraries.npos) << heavy;
#ifdef NDEBUG // only then does the linker leave out what nothing needs: ICU's time zones would double the start
    EXPECT_EQ(libraries.find("libicui18n"), libraries.npos);
#endif
}

TEST_F(Program, goesOnWithDamagedSettings) {
    const std::filesystem::path settings = std::getenv("XDG_CONFIG_HOME") + std::string("/fr.dravel.Tacla");
    std::filesystem::create_directories(settings);
    writeBytes(settings / "preferences.json", "{");
    const auto list = "HOME=" + folder.path().string() + " TACLA_FILE= " + program + " list";
    const auto unreadable = "tacla : " + folder.path().string() + "/Documents/Tacla/taches.md illisible\n";
    EXPECT_EQ(shell(list).output, "tacla : réglages endommagés, mis de côté dans " + settings.string() +
                                      "/preferences.json.broken\n" + unreadable);
    EXPECT_EQ(shell(list).output, unreadable);
}
