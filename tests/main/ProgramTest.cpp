#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>

using namespace tacla::testing;
using namespace std::string_literals;

namespace {

// The program as a user starts it: what it says, on either stream, and its exit status.
std::string shell(const std::string& command) {
    FILE* const pipe = ::popen((command + " 2>&1").c_str(), "r");
    std::string output;
    std::array<char, 4096> buffer;
    while (const auto count = std::fread(buffer.data(), 1, buffer.size(), pipe)) output.append(buffer.data(), count);
    return output + std::to_string(WEXITSTATUS(::pclose(pipe)));
}

const std::string program = TACLA_PROGRAM;

struct Program : ::testing::Test {
    Program() {
        writeBytes(file, "- [ ] Pain · 2025-03-06\n");
        ::setenv("TACLA_FILE", file.c_str(), 1);
    }
    ~Program() override { ::unsetenv("TACLA_FILE"); }

    TemporaryFolder folder;
    std::filesystem::path file = folder / "taches.md";
};

}

TEST_F(Program, SaysWhenItsOutputGoesNowhere) {
    EXPECT_EQ(shell(program + " list"), "🔴 Pain · 2025-03-06\n0");
    const auto pipe = (folder / "pipe").string();
    const std::pair<std::string, const char*> expected[] = {
        {"{ " + program + " list > /dev/full; }", "Il n'y a plus de place sur le disque"},
        {"{ " + program + " list >&-; }", "Le flux est fermé"},
        {"mkfifo " + pipe + "; exec 3<>" + pipe + "; exec 4>" + pipe + "; exec 3>&-; { " + program + " list >&4; }",
         "Plus personne ne lit la sortie"},
    };
    for (const auto& [command, reason] : expected)
        EXPECT_EQ(shell(command), "tacla : impossible d'écrire sur la sortie : "s + reason + "\n1");
}

// A copy of the program, with whatever stands in for the other ones.
TEST_F(Program, StartsAndMissesTheProgramsOfItsOwnInstallation) {
    const auto shortcut = TemporaryFolder(); // holds no installation: links are followed
    for (const auto* part : {"bin", "libexec/tacla"}) std::filesystem::create_directories(folder / part);
    std::filesystem::copy_file(program, folder / "bin/tacla");
    std::filesystem::create_symlink(folder / "bin/tacla", shortcut / "tacla");
    const auto copy = (shortcut / "tacla").string();
    EXPECT_EQ(shell(copy), "tacla : l'application de bureau n'est pas installée (paquet tacla-desktop)\n1");
    EXPECT_EQ(shell(copy + " list"), "🔴 Pain · 2025-03-06\n0");

    const auto desktop = folder / "libexec/tacla/tacla-desktop", sync = folder / "libexec/tacla/tacla-sync";
    writeBytes(desktop, "");
    EXPECT_EQ(shell(copy + " --notify-test"),
              "tacla : impossible de charger " + desktop.string() + " : Permission non accordée\n1");

    const auto install = [](const std::filesystem::path& at, const std::string& script) {
        writeBytes(at, "#!/bin/sh\n" + script);
        std::filesystem::permissions(at, std::filesystem::perms::owner_all);
    };
    install(desktop, "echo \"$*\" $XDG_ACTIVATION_TOKEN; exit 9");
    EXPECT_EQ(shell("XDG_ACTIVATION_TOKEN=x " + copy + " --snapshot a.png --dark"), "--snapshot a.png --dark x\n9");

    const auto settings = std::getenv("XDG_CONFIG_HOME") + "/fr.dravel.Tacla/preferences.json"s;
    std::filesystem::create_directories(std::filesystem::path(settings).parent_path());
    writeBytes(settings, R"({"calendarSync": true})");
    install(sync, "echo \"$*\"; wc -c; exit 3");
    EXPECT_EQ(shell(copy + " rename pain Lait"), "✏️ Pain → Lait\n--renamed-keys\n39\n3");
    EXPECT_EQ(shell("echo typed | " + copy + " sync"), "\n6\n3");
    EXPECT_EQ(shell(copy + " rename lait Pain <&-"), "✏️ Lait → Pain\n--renamed-keys\n39\n3");
    std::filesystem::remove(settings);
}

TEST_F(Program, LoadsNeitherWindowNorNetworkForTheTerminal) {
    const auto libraries = shell("ldd " + program);
    EXPECT_NE(libraries.find("libc.so"), libraries.npos);
    for (const auto* heavy : {"libQt", "libcurl", "libsecret", "libglib", "libcrypto"})
        EXPECT_EQ(libraries.find(heavy), libraries.npos) << heavy;
#ifdef NDEBUG // only then does the linker leave out what nothing needs: ICU's time zones would double the start
    EXPECT_EQ(libraries.find("libicui18n"), libraries.npos);
#endif
}

TEST_F(Program, SaysInFrenchThatItsFolderIsGone) {
    const auto gone = (folder / "gone").string();
    for (const auto* command : {" list", " done pain"})
        EXPECT_EQ(
            shell("mkdir " + gone + "; cd " + gone + "; rmdir " + gone + "; TACLA_FILE=taches.md " + program + command),
            "tacla : taches.md illisible\n1");
}

TEST_F(Program, GoesOnWithDamagedSettings) {
    const std::filesystem::path settings = std::getenv("XDG_CONFIG_HOME") + std::string("/fr.dravel.Tacla");
    std::filesystem::create_directories(settings);
    writeBytes(settings / "preferences.json", "{");
    const auto list = "HOME=" + folder.path().string() + " TACLA_FILE= " + program + " list";
    const auto unreadable = "tacla : " + folder.path().string() + "/Documents/Tacla/taches.md illisible\n1";
    EXPECT_EQ(shell(list), "tacla : réglages endommagés, mis de côté dans " + settings.string() +
                               "/preferences.json.broken\n" + unreadable);
    EXPECT_EQ(shell(list), unreadable);
}
