#include "DravelKit/Foundation/SafeFile.h"
#include "tests/SafeFile/FaultySystem.h"
#include "tests/support/Processes.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <set>

using namespace tacla::testing;
namespace SafeFile = dravel::SafeFile;
using Path = std::filesystem::path;

namespace {

const std::string before = "- [ ] Pain\n" + std::string(9000, 'a') + "\n", mark = "- [ ] Lait\n";

std::optional<std::string> marked(std::string_view text) { return mark + std::string(text); }

// A way to save, and the names under which the file can be seen.
struct Scenario {
    const char* name;
    bool hardLinked = false, exists = true;
    int exchangeError = 0;
};
void PrintTo(const Scenario& scenario, std::ostream* out) { *out << scenario.name; }

class Saving : public ::testing::TestWithParam<Scenario> {
  public:
    void SetUp() override {
        std::filesystem::create_directory(locks);
        prepare();
    }

    void prepare() {
        std::filesystem::remove_all(folder / "list");
        std::filesystem::create_directories(folder / "list");
        if (GetParam().exists) writeBytes(file, before);
        if (GetParam().hardLinked) std::filesystem::create_hard_link(file, folder / "list" / "other.md");
    }
    bool save() const {
        try {
            if (GetParam().exists) return SafeFile::edit(file, marked, locks).has_value();
            return SafeFile::editOwn(file, marked, locks).has_value();
        } catch (const dravel::FileError&) {
            return false;
        }
    }
    std::string old() const { return GetParam().exists ? before : ""; }
    int calls() {
        const int count = [&] {
            const Fault counting(0, Fault::Kind::none);
            EXPECT_TRUE(save());
            return counting.calls();
        }();
        prepare();
        return count;
    }
    // Whatever happened before, the next edit works on a whole text, and leaves nothing of ours behind.
    void expectNextEditWhole() const {
        EXPECT_TRUE(save());
        const auto text = readBytes(file);
        EXPECT_TRUE(text == mark + old() || text == mark + mark + old()) << text.substr(0, 40) << "… " << text.size();
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder / "list"))
            names.insert(entry.path().filename());
        EXPECT_EQ(names.size(), GetParam().hardLinked ? 2U : 1U) << ::testing::PrintToString(names);
        if (GetParam().hardLinked) {
            EXPECT_EQ(readBytes(folder / "list" / "other.md"), text);
        }
    }

    TemporaryFolder folder;
    const Path file = folder / "list/taches.md", locks = folder / "locks";
};

}

TEST_P(Saving, survivesEachSystemCallFailingOnce) {
    const int count = calls();
    ASSERT_GT(count, 15);
    for (int call = 0; call < count; ++call) {
        SCOPED_TRACE(call);
        const bool saved = [&] {
            const Fault fault(call, Fault::Kind::once);
            return save();
        }();
        const auto text = readBytes(file);
        // A file that did not exist may be there although the folder could not be synced: whole.
        if (saved || (!GetParam().exists && !text.empty())) {
            EXPECT_EQ(text, mark + old());
        } else {
            EXPECT_EQ(text, old());
        }
        expectNextEditWhole();
        prepare();
    }
}

TEST_P(Saving, survivesAllSystemCallsFailingFromOneOn) {
    const int count = calls();
    for (int call = 0; call < count; ++call) {
        SCOPED_TRACE(call);
        const bool saved = [&] {
            const Fault fault(call, Fault::Kind::forGood);
            return save();
        }();
        const auto text = readBytes(file);
        if (saved) {
            EXPECT_EQ(text, mark + old());
        }
        if (!GetParam().hardLinked) {
            EXPECT_TRUE(text == old() || text == mark + old());
        }
        expectNextEditWhole();
        prepare();
    }
}

TEST_P(Saving, survivesBeingKilledBeforeEachSystemCall) {
    const int count = calls();
    for (int call = 0; call < count; ++call) {
        SCOPED_TRACE(call);
        const int status = inChild([&] {
            const Fault fault(call, Fault::Kind::kill);
            return save() ? 0 : 1;
        });
        EXPECT_EQ(status, killedStatus);
        const auto text = readBytes(file);
        if (!GetParam().hardLinked) {
            EXPECT_TRUE(text == old() || text == mark + old());
        }
        expectNextEditWhole();
        prepare();
    }
}

INSTANTIATE_TEST_SUITE_P(Ways, Saving,
                         ::testing::Values(Scenario{"byExchange"}, Scenario{"inPlace", true},
                                           Scenario{"ofANewFile", false, false}),
                         [](const auto& scenario) { return std::string(scenario.param.name); });

TEST(SafeFile, replacesWhereTheFileSystemCannotExchange) {
    const TemporaryFolder folder;
    writeBytes(folder / "taches.md", before);
    const Fault fault("renameat2", EINVAL);
    EXPECT_TRUE(SafeFile::edit(folder / "taches.md", marked, folder / "locks"));
    EXPECT_TRUE(SafeFile::editOwn(folder / "new.md", marked, folder / "locks"));
    EXPECT_EQ(readBytes(folder / "taches.md"), mark + before);
    EXPECT_EQ(readBytes(folder / "new.md"), mark);
}

TEST(SafeFile, writesInPlaceOverAFileThatIsAMount) {
    const TemporaryFolder folder;
    writeBytes(folder / "taches.md", before);
    const Fault fault("renameat2", EBUSY);
    EXPECT_TRUE(SafeFile::edit(folder / "taches.md", marked, folder / "locks"));
    EXPECT_EQ(readBytes(folder / "taches.md"), mark + before);
}

TEST(SafeFile, keepsWhatAnEditorSavesAtTheLastMoment) {
    for (const auto* moment : {"pwrite", "fsync", "renameat2"}) {
        const TemporaryFolder folder;
        const auto file = folder / "taches.md";
        writeBytes(file, "- [ ] Pain\n");
        const Fault editor(moment, [&] {
            writeBytes(folder / "editor", "- [ ] Beurre\n");
            std::filesystem::rename(folder / "editor", file);
        });
        EXPECT_EQ(SafeFile::edit(file, marked, folder / "locks")->before, "- [ ] Beurre\n") << moment;
        EXPECT_EQ(readBytes(file), mark + "- [ ] Beurre\n") << moment;
    }
}
