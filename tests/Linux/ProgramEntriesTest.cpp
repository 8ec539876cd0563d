#include "Tacla/Linux/ProgramEntries.h"

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Foundation/SafeFile.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace tacla;
using namespace tacla::testing;
namespace fs = std::filesystem;

static const std::string odd = "/opt/Mes outils/100% $`\"\\tacla";

TEST(Autostart, QuotesTheProgramForTheExecKey) {
    EXPECT_EQ(autostartEntry(odd), "[Desktop Entry]\nType=Application\nName=Tacla\nIcon=fr.dravel.Tacla\n"
                                   "TryExec=/opt/Mes outils/100% $`\"\\\\tacla\nExec=\"/opt/Mes outils/100%% "
                                   "\\\\$\\\\`\\\\\"\\\\\\\\tacla\"\nTerminal=false\n"
                                   "X-GNOME-Autostart-enabled=true\n");
    EXPECT_EQ(statusOfAutostartEntry(autostartEntry(odd), odd, ""), LoginItem::Status::enabled);
}

TEST(Autostart, ReadsWhatOtherProgramsMadeOfTheEntry) {
    using Status = LoginItem::Status;
    const TemporaryFolder folder;
    const auto program = (folder / "tacla").string();
    writeBytes(program, "");
    const std::string head = "[Desktop Entry]\nType=Application\nExec=", ours = head + program;
    const std::pair<std::string, Status> cases[] = {
        {autostartEntry(program), Status::enabled},
        {head + "tacla %U", Status::enabled}, // by the search path
        {ours + "\nHidden=false\nX-GNOME-Autostart-enabled = true\n", Status::enabled},
        {ours + "\n[Desktop Action new]\nHidden=true\n", Status::enabled},
        {"[Desktop Entry]\r\nType=Application\r\nHidden=true\r\n", Status::switchedOff},
        {head + "/gone/tacla\nX-GNOME-Autostart-enabled=false\n", Status::switchedOff},
        {autostartEntry("/gone/build/bin/tacla"), Status::foreign},
        {head + "sh -c tacla\n", Status::foreign},
        {"Type=Application\nExec=" + program, Status::foreign},
        {"", Status::foreign},
    };
    for (const auto& [text, status] : cases)
        EXPECT_EQ(statusOfAutostartEntry(text, program, "/nowhere:" + folder.path().string()), status) << text;
}

TEST(Autostart, ComesAndGoesWithTheSwitch) {
    const TemporaryFolder folder;
    AutostartLoginItem item(folder / "config", "/opt/tacla", folder / "locks");
    EXPECT_FALSE(item.isEnabled());
    item.disable(); // of what was not there
    item.enable();
    EXPECT_TRUE(item.isEnabled());
    const auto file = folder / "config/autostart/fr.dravel.Tacla.desktop";
    EXPECT_EQ(dravel::SafeFile::readText(file), autostartEntry("/opt/tacla"));

    std::ofstream(file, std::ios::app) << "Hidden=true\n"; // as a desktop's settings do
    EXPECT_EQ(item.status(), LoginItem::Status::switchedOff);
    item.enable();
    EXPECT_TRUE(item.isEnabled());
    AutostartLoginItem built(folder / "config", folder / "build/bin/tacla", folder / "locks");
    EXPECT_EQ(built.status(), LoginItem::Status::foreign);
    EXPECT_TRUE(built.mayComeUnasked());
    fs::create_directories(folder / "build/bin");
    writeBytes(folder / "build/CMakeCache.txt", "");
    EXPECT_FALSE(built.mayComeUnasked());
    item.disable();
    EXPECT_FALSE(fs::exists(file));
    EXPECT_THROW(AutostartLoginItem(folder / "build/CMakeCache.txt", "/opt/tacla", folder / "locks").enable(),
                 dravel::FileError)
        << "its folder cannot be made";
}

TEST(CommandLineLink, IsProposedWhereNoTerminalFindsTheProgram) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        // the search path, the one entry that exists
        {"/usr/bin:/bin", "", true},
        {"", "", true},
        {"/usr/bin:/bin", "/bin/tacla", false},
        {"/usr/bin", "/home/c/.local/bin/tacla", false},
        {"/usr/bin", "/opt/tacla", true},
    };
    for (const auto& [searchPath, present, made] : cases) {
        const auto link = commandLineLink("/home/c", searchPath, "/opt/tacla/bin/tacla",
                                          [there = present](const fs::path& path) { return path == there; });
        const CommandLineLink expected{"/home/c/.local/bin/tacla", "/opt/tacla/bin/tacla"};
        EXPECT_EQ(link, made ? std::optional(expected) : std::nullopt) << searchPath << ", " << present;
    }
}

TEST(CommandLineLink, IsMadeOnceAndReplacesNothing) {
    const TemporaryFolder home;
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
