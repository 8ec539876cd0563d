#include "tests/SafeFile/FaultySystem.h"
#include "tests/SafeFile/SafeFileWorld.h"

#include <fcntl.h>
#include <sys/xattr.h>

#include <cerrno>
#include <thread>

using namespace tacla::testing;

namespace {

enum class Way { byExchange, inPlace, ofANewFile };

// A long text: its parts can be told from the whole.
const std::string longText = "- [ ] Pain\n" + std::string(9000, 'a') + "\n";

// Before that the file's name has led it to the file, perhaps, and nobody can know: what it writes later is lost then.
void untilItWaits(pid_t process) {
    const auto state = [=] {
        const auto line = readBytes("/proc/" + std::to_string(process) + "/stat");
        return line.at(line.rfind(')') + 2);
    };
    while (state() == 'R') std::this_thread::yield();
}

// An editor that opens the file, and then writes all of it; it may have to wait for our lease to end. Returns once it
// has written, or waits.
pid_t writesBeside(const Path& file, std::string_view bytes) {
    int ends[2];
    if (::pipe(ends) != 0) return -1;
    const pid_t editor = start([&] {
        constexpr int flags = O_WRONLY | O_TRUNC;
        int descriptor = ::open(file.c_str(), flags | O_NONBLOCK);
        const bool mustWait = descriptor < 0 && errno == EWOULDBLOCK;
        if (mustWait && ::write(ends[1], "w", 1) != 1) return 1;
        if (mustWait) descriptor = ::open(file.c_str(), flags);
        if (::write(descriptor, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) return 2;
        ::close(descriptor);
        return mustWait || ::write(ends[1], "", 1) == 1 ? 0 : 3;
    });
    char told = 0;
    EXPECT_EQ(::read(ends[0], &told, 1), 1);
    if (told == 'w') untilItWaits(editor);
    for (const int end : ends) ::close(end);
    return editor;
}

class Saving : public ::testing::TestWithParam<std::tuple<Way, Fault::Kind>> {
  public:
    const Way way = std::get<Way>(GetParam());
    const std::string old = way == Way::ofANewFile ? "" : longText;
    const SafeFileWorld world;

    void prepare() const {
        std::filesystem::remove_all(world.list);
        std::filesystem::create_directories(world.list);
        std::filesystem::remove_all(world.locks);
        if (way != Way::ofANewFile) writeBytes(world.file, old);
        ::setxattr(world.file.c_str(), "user.note", "à garder", 9, 0); // where the file system knows attributes
        if (way == Way::inPlace) std::filesystem::create_hard_link(world.file, world.list / "other.md");
    }
    bool save() const {
        try {
            if (way == Way::ofANewFile) return SafeFile::editOwn(world.file, marked, world.locks).has_value();
            return SafeFile::edit(world.file, marked, world.locks).has_value();
        } catch (const dravel::FileError&) {
            return false;
        }
    }
    int calls() const {
        const Fault counting(0, Fault::Kind::none);
        EXPECT_TRUE(save());
        return counting.calls();
    }
    bool saveUnder(Fault::Kind kind, int call) const {
        const auto attempt = [&] {
            const Fault fault(call, kind);
            return save();
        };
        if (kind != Fault::Kind::kill) return attempt();
        EXPECT_EQ(inChild(attempt), killedStatus);
        return false;
    }
    void expectWhole(Fault::Kind kind, bool saved) const {
        const auto text = world.text();
        if (saved) {
            EXPECT_EQ(text, mark + old);
        } else if (kind == Fault::Kind::once && way != Way::ofANewFile) {
            EXPECT_EQ(text, old);
        } else if (way != Way::inPlace) { // what cannot be undone, or was never said to have failed, is whole
            EXPECT_TRUE(text == old || text == mark + old) << text.size();
        }
    }
    // Whatever happened before, the next edit works on a whole text, and leaves nothing of ours behind.
    void expectNextEditWhole() const {
        EXPECT_TRUE(save());
        const auto text = world.text();
        EXPECT_TRUE(text == mark + old || text == mark + mark + old) << text.size();
        EXPECT_EQ(world.entries(), way == Way::inPlace ? 2 : 1);
        EXPECT_EQ(readBytes(way == Way::inPlace ? world.list / "other.md" : world.file), text);
    }
};

std::string nameOf(const ::testing::TestParamInfo<Saving::ParamType>& parameter) {
    const auto [way, kind] = parameter.param;
    constexpr const char *ways[] = {"byExchange", "inPlace", "ofANewFile"}, *kinds[] = {"", "Once", "ForGood", "Kill"};
    return std::string(ways[static_cast<int>(way)]) + kinds[static_cast<int>(kind)];
}

}

TEST_P(Saving, SurvivesAFaultAtEachSystemCall) {
    const auto kind = std::get<Fault::Kind>(GetParam());
    prepare();
    const int count = calls();
    ASSERT_GT(count, 15);
    for (int call = 0; call < count; ++call) {
        SCOPED_TRACE(call);
        prepare();
        expectWhole(kind, saveUnder(kind, call));
        expectNextEditWhole();
    }
}

INSTANTIATE_TEST_SUITE_P(EachWay, Saving,
                         ::testing::Combine(::testing::Values(Way::byExchange, Way::inPlace, Way::ofANewFile),
                                            ::testing::Values(Fault::Kind::once, Fault::Kind::forGood,
                                                              Fault::Kind::kill)),
                         nameOf);

TEST(SafeFile, CountsAFailedSyncAsAFailedSave) {
    const SafeFileWorld world;
    const Fault fault("fsync", nullptr, EIO);
    EXPECT_EQ(world.failure(), "Erreur d'entrée-sortie");
    EXPECT_EQ(world.text(), "- [ ] Pain\n");
    const Fault odd("fsync", nullptr, ENOTTY);
    EXPECT_EQ(world.failure(), "Inappropriate ioctl for device");
}

TEST(SafeFile, SavesWhereTheFileSystemCannotDoEverythingAndThroughSignals) {
    const std::pair<const char*, int> hindrances[] = {
        {"renameat2", EINVAL}, {"renameat2", ENOSYS},   {"renameat2", EBUSY},   {"renameat2", EXDEV},
        {"fsync", EINVAL},     {"flistxattr", ENOTSUP}, {"flistxattr", ENOSYS}, {"open", EINTR},
        {"pread", EINTR},      {"pwrite", EINTR},       {"fsync", EINTR},       {"flock", EINTR}};
    for (const auto& [call, error] : hindrances) {
        const SafeFileWorld world;
        const Fault fault(call, nullptr, error);
        EXPECT_EQ(world.failure(), "") << call;
        EXPECT_EQ(world.text(), mark + "- [ ] Pain\n") << call;
        if (error != EINVAL && error != ENOSYS) continue; // what a file system does not know at all
        EXPECT_TRUE(SafeFile::create(world.list / "new.md", mark)) << call;
        EXPECT_FALSE(SafeFile::create(world.list / "new.md", "")) << call;
        EXPECT_EQ(readBytes(world.list / "new.md"), mark) << call;
    }
}

TEST(SafeFile, KeepsWhatAnEditorSavesAtTheLastMoment) {
    for (const auto* moment : {"pread", "pwrite", "fsync", "renameat2"})
        for (const bool byRename : {false, true})
            for (const bool hardLinked : {false, true}) {
                const SafeFileWorld world;
                const auto copy = world.folder / "copy";
                if (hardLinked) std::filesystem::create_hard_link(world.file, copy);
                bool saved = false;
                pid_t editor = -1;
                const Fault fault(moment, [&] {
                    if (byRename) {
                        writeBytes(world.folder / "editor", "- [ ] Beurre\n");
                        std::filesystem::rename(world.folder / "editor", world.file);
                    } else {
                        editor = writesBeside(world.file, "- [ ] Beurre\n");
                    }
                    saved = true;
                });
                EXPECT_EQ(world.failure(), "");
                EXPECT_EQ(editor < 0 ? 0 : finished(editor), 0);
                EXPECT_EQ(saved, !hardLinked || moment != std::string("renameat2"));
                const std::string text = saved ? "- [ ] Beurre\n" : "- [ ] Pain\n";
                // An editor that had to wait may also come after us: then it has the last word.
                EXPECT_TRUE(world.text() == mark + text || (editor >= 0 && world.text() == text))
                    << moment << world.text();
            }
}

TEST(SafeFile, MakesNoListThatSomebodyRemovesAtTheLastMoment) {
    const SafeFileWorld world;
    const Fault remover("renameat2", [&] { std::filesystem::remove(world.file); });
    EXPECT_EQ(world.failure(), "Aucun fichier ou dossier de ce nom");
    EXPECT_EQ(world.entries(), 0);
}

TEST(SafeFile, LocksWhoeverMakesTheFolderAndAgainWhenTheLockIsSweptAway) {
    const SafeFileWorld world;
    {
        const Fault other(
            "mkdir", [&] { std::filesystem::create_directories(world.locks); }, EEXIST);
        EXPECT_EQ(world.failure(), "");
    }
    const Fault sweeper("flock", [&] { std::filesystem::remove(*std::filesystem::directory_iterator(world.locks)); });
    EXPECT_EQ(world.failure(), "");
}
