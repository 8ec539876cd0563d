#include "tests/support/Processes.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

using namespace tacla::testing;

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
    const auto full = shell("{ " + program + " list > /dev/full; }");
    EXPECT_EQ(full.output, "tacla : impossible d'écrire sur la sortie : Il n'y a plus de place sur le disque\n");
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(shell("{ " + program + " list >&-; }").output,
              "tacla : impossible d'écrire sur la sortie : Le flux est fermé\n");
    const auto closed = shell("bash -c '" + program + " list | true; echo ${PIPESTATUS[0]}' < /dev/null");
    EXPECT_TRUE(closed.output == "0\n" || closed.output.ends_with("Plus personne ne lit la sortie\n1\n"))
        << closed.output;
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

TEST_F(Program, checksTwentyTasksAtOnce) {
    std::string text, expected;
    for (int number = 100; number < 120; ++number) text += "- [ ] Tâche " + std::to_string(number) + "\n";
    writeBytes(file, text);
    std::vector<pid_t> children;
    for (int number = 100; number < 120; ++number)
        children.push_back(start([&] { return shell(program + " done tâche " + std::to_string(number)).status; }));
    for (const auto child : children) EXPECT_EQ(finished(child), 0);
    const auto done = readBytes(file);
    EXPECT_EQ(std::count(done.begin(), done.end(), '\n'), 20);
    EXPECT_EQ(done.find("- [ ]"), done.npos);
}

TEST_F(Program, loadsNeitherWindowNorNetworkForTheTerminal) {
    const auto libraries = shell("ldd " + program).output;
    EXPECT_NE(libraries.find("libc.so"), libraries.npos);
    for (const auto* heavy : {"libQt", "libcurl", "libsecret", "libglib", "libicui18n"})
        EXPECT_EQ(libraries.find(heavy), libraries.npos) << heavy;
}

TEST_F(Program, goesOnWithDamagedSettings) {
    const std::filesystem::path settings = std::getenv("XDG_CONFIG_HOME") + std::string("/fr.dravel.Tacla");
    std::filesystem::create_directories(settings);
    writeBytes(settings / "preferences.json", "{");
    const auto shown = shell("TACLA_FILE= " + program + " list");
    EXPECT_EQ(shown.output.find("tacla : réglages endommagés, mis de côté dans " + settings.string()), 0U);
    EXPECT_EQ(shown.status, 1);
    EXPECT_EQ(shell("HOME=" + folder.path().string() + " TACLA_FILE= " + program + " list").output,
              "tacla : " + folder.path().string() + "/Documents/Tacla/taches.md illisible\n");
}
