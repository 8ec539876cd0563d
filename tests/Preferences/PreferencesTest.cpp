#include "Tacla/Preferences/Preferences.h"
#include "DravelKit/Foundation/FileError.h"
#include "Tacla/Preferences/NotifiedTasks.h"
#include "tests/support/Processes.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace tacla;
using namespace tacla::testing;

namespace {

struct Store {
    TemporaryFolder folder;
    std::filesystem::path file = folder / "config/preferences.json";
    std::string aside = file.string() + ".broken";
    std::vector<std::string> reports;
    Preferences preferences{file, folder / "locks", [this](const auto& message) { reports.push_back(message); }};

    explicit Store(std::string_view bytes = "{}") {
        std::filesystem::create_directories(file.parent_path());
        writeBytes(file, bytes);
    }
};

}

TEST(Preferences, ChangesOneKeyAndKeepsTheOthers) {
    Store store(R"({"taskFilePath": "/a.md", "ofALaterVersion": null})");
    store.preferences.setCalendar("identifier", true);
    store.preferences.setTaskFilePath("/été.md");
    EXPECT_EQ(readBytes(store.file), R"({
  "calendarCreatedByTacla": true,
  "calendarID": "identifier",
  "ofALaterVersion": null,
  "taskFilePath": "/été.md"
}
)");
    EXPECT_THROW(store.preferences.setTaskFilePath("/\xE9t\xE9.md"), dravel::FileError);
    EXPECT_EQ(store.preferences.taskFilePath(), "/été.md");
}

TEST(Preferences, CountsAValueOfAnotherTypeAsAbsent) {
    for (const auto* size : {"[800, -1]", "[800]", "[32768, 600]", "[800, 600.5]", "\"800x600\""})
        EXPECT_FALSE(Store("{\"windowSize\": " + std::string(size) + "}").preferences.windowSize()) << size;
    const Store store(R"({"taskFilePath": 3, "calendarID": false, "calendarSync": 1, "notifiedTasks": ["a", 2],
                          "wantsLaunchAtLogin": "false", "onboardingDone": null})");
    const auto& read = store.preferences;
    EXPECT_FALSE(read.taskFilePath() || read.calendarID() || read.calendarSync() || !read.notifiedTasks().empty() ||
                 read.wantsLaunchAtLogin() || read.onboardingDone());
}

TEST(Preferences, MirrorsByDefaultOnceThereIsACalendar) {
    EXPECT_FALSE(Store().preferences.calendarSync());
    EXPECT_TRUE(Store(R"({"calendarID": "c", "calendarSync": "no"})").preferences.calendarSync());
    EXPECT_FALSE(Store(R"({"calendarID": "c", "calendarSync": false})").preferences.calendarSync());
}

TEST(Preferences, KeepsADamagedFileAside) {
    for (const auto* damaged : {"{\"calendarSync\": tru", "[]", "{\"taskFilePath\": \"caf\xE9\"}"}) {
        Store store(damaged);
        EXPECT_FALSE(store.preferences.taskFilePath() || store.preferences.calendarSync());
        EXPECT_EQ(store.reports, std::vector{"réglages endommagés, mis de côté dans " + store.aside});
        EXPECT_EQ(readBytes(store.aside), damaged);

        writeBytes(store.file, damaged);
        store.preferences.setCalendarSync(true);
        EXPECT_EQ(readBytes(store.file), "{\n  \"calendarSync\": true\n}\n");
    }
    Store empty("");
    empty.preferences.setOnboardingDone(true);
    EXPECT_TRUE(empty.preferences.onboardingDone());
    EXPECT_TRUE(empty.reports.empty());
}

TEST(Preferences, EndsNoProgramAndLosesNoKeyOverAStrangeValue) {
    const auto deep = "{\"deep\": " + std::string(300'000, '[') + std::string(300'000, ']') + "}";
    const auto survive = [&] {
        Store store(deep);
        store.preferences.setCalendarSync(true);
        return store.preferences.calendarSync() && readBytes(store.aside) == deep ? 0 : 1;
    };
    EXPECT_EQ(inChild(survive), 0);
    for (const auto* number : {"1e400", "-1E+999", "[1.5e400, \"1e400 \\\" 1e400\"]"}) {
        Store store("{\"taskFilePath\": \"/1e400.md\", \"far\": " + std::string(number) + "}");
        EXPECT_EQ(store.preferences.taskFilePath(), "/1e400.md");
        store.preferences.setCalendarSync(true);
        EXPECT_EQ(store.preferences.taskFilePath(), "/1e400.md");
        EXPECT_TRUE(store.reports.empty());
    }
}

TEST(Preferences, ReplacesNothingThatWasKeptAsideBefore) {
    Store store("damaged");
    std::filesystem::create_directory(store.aside);
    writeBytes(store.aside + "-2", "older");
    EXPECT_FALSE(store.preferences.calendarSync());
    EXPECT_EQ(store.reports, std::vector{"réglages endommagés, mis de côté dans " + store.aside + "-3"});
    EXPECT_EQ(readBytes(store.aside + "-2") + readBytes(store.aside + "-3"), "olderdamaged");

    Store linked;
    const auto elsewhere = std::filesystem::path("/dev/shm") / linked.folder.path().filename();
    if (!std::filesystem::exists("/dev/shm")) GTEST_SKIP() << "no other file system at hand";
    writeBytes(elsewhere, "damaged");
    std::filesystem::remove(linked.file);
    std::filesystem::create_symlink(elsewhere, linked.file);
    linked.preferences.setCalendarSync(true);
    EXPECT_TRUE(linked.preferences.calendarSync());
    EXPECT_EQ(readBytes(elsewhere.string() + ".broken"), "damaged");
    EXPECT_TRUE(std::filesystem::is_symlink(linked.file));
    for (const auto* ending : {"", ".broken"}) std::filesystem::remove(elsewhere.string() + ending);
}

TEST(Preferences, WritesBackWhatItKnowsWhenTheFileIsDamagedMeanwhile) {
    for (const auto* damaged : {"{\"calendarSync\": tru", "", "\xFF"}) {
        const auto* good = R"({"calendarSync": true, "ofALaterVersion": [1]})";
        Store store(good);
        EXPECT_TRUE(store.preferences.calendarSync());
        writeBytes(store.file, damaged);
        EXPECT_TRUE(store.preferences.calendarSync()) << damaged;
        EXPECT_EQ(store.reports.size(), 1U);
        EXPECT_EQ(readBytes(store.file), good);
        writeBytes(store.file, damaged);
        store.preferences.setOnboardingDone(true);
        EXPECT_TRUE(store.preferences.calendarSync() && store.preferences.onboardingDone());
        EXPECT_EQ(store.reports.size(), 2U);
    }
}

TEST(Preferences, OverwritesNothingThatItCannotRead) {
    Store store;
    std::filesystem::remove(store.file);
    std::filesystem::create_directory(store.file);
    EXPECT_FALSE(store.preferences.onboardingDone() || store.preferences.calendarSync());
    EXPECT_EQ(store.reports, std::vector{"réglages illisibles (" + store.file.string() + ") : C'est un dossier"});
    EXPECT_THROW(store.preferences.setCalendarSync(true), dravel::FileError);
}

TEST(Preferences, LosesNoKeyOfAnotherProcess) {
    Store store;
    std::vector<pid_t> children;
    for (int entry = 0; entry < 6; ++entry)
        children.push_back(start([&] {
            store.preferences.updateNotifiedTasks([&](auto notified) {
                notified.push_back(std::to_string(entry) + "@2025-03-04");
                return notified;
            });
            return 0;
        }));
    children.push_back(start([&] { return store.preferences.setCalendarSync(true), 0; }));
    for (const auto child : children) EXPECT_EQ(finished(child), 0);
    EXPECT_EQ(store.preferences.notifiedTasks().size(), 6U);
    EXPECT_TRUE(store.preferences.calendarSync());
}

TEST(NotifiedTasks, FollowRenamedTasks) {
    EXPECT_EQ(
        NotifiedTasks::rekeyed({"a@2025-03-04 14:30", "b@2025-03-04", "ab@2025-03-04", "a"}, {{"a", "b"}, {"b", "c"}}),
        (std::vector<std::string>{"b@2025-03-04 14:30", "c@2025-03-04", "ab@2025-03-04", "a"}));
    EXPECT_EQ(NotifiedTasks::underBothKeys({"a@2025-03-04", "d@2025-03-04"}, {{"a", "b"}}),
              (std::vector<std::string>{"a@2025-03-04", "d@2025-03-04", "b@2025-03-04"}));
}
