#include "tests/SafeFile/SafeFileWorld.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>
#include <functional>
#include <thread>
#include <utility>

using namespace tacla::testing;

namespace {

// The system calls of this test program go through wrappers. A fault makes some of them fail, as long as it lives.
class Fault {
  public:
    enum class Kind { none, once, forGood, kill };
    // The n-th call, counted from 0, or all from there on. "kill" ends the process just before it.
    Fault(int call, Kind kind) : call_(call), error_(EIO), kind_(kind) { current = this; }
    // Runs an action just before the first call of that name; then the calls of that name fail so, unless it is 0.
    Fault(std::string name, std::function<void()> action, int error = 0)
        : error_(error), name_(std::move(name)), action_(std::move(action)) {
        current = this;
    }
    ~Fault() { current = nullptr; }

    int calls() const { return calls_; }

    // The error to fail with, 0 for none.
    static int strike(const char* name) { return current == nullptr ? 0 : current->struck(name); }

  private:
    int struck(const std::string& name) {
        const int index = calls_++;
        if (name_ == name) {
            current = nullptr; // the action's own calls are not counted
            if (const auto action = std::exchange(action_, nullptr)) action();
            current = this;
            return error_ == EINTR ? std::exchange(error_, 0) : error_; // a signal comes once
        }
        if (kind_ == Kind::kill && index == call_) ::raise(SIGKILL);
        const bool fails = (kind_ == Kind::once && index == call_) || (kind_ == Kind::forGood && index >= call_);
        return fails ? error_ : 0;
    }

    inline static Fault* current = nullptr;
    int call_ = -1, calls_ = 0, error_;
    Kind kind_ = Kind::none;
    std::string name_;
    std::function<void()> action_;
};

// The real call, unless a fault strikes it.
template <class Result, class... Arguments>
Result passed(const char* name, Arguments... arguments) {
    if (const int error = Fault::strike(name)) return errno = error, -1;
    return reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, name))(arguments...);
}

}

#pragma GCC diagnostic ignored "-Wshadow" // flock is a function and a structure

// Declared here as the C library does, but for what its headers say about them to the compiler.
#define WRAPPED(exceptions, result, name, parameters, ...)                                                             \
    extern "C" result name parameters exceptions { return passed<result>(#name, __VA_ARGS__); }

WRAPPED(, ssize_t, pread, (int f, void* b, size_t n, off_t o), f, b, n, o)
WRAPPED(, ssize_t, pwrite, (int f, const void* b, size_t n, off_t o), f, b, n, o)
WRAPPED(, int, fsync, (int f), f)
WRAPPED(, int, getentropy, (void* b, size_t n), b, n)
WRAPPED(noexcept, int, ftruncate, (int f, off_t n), f, n)
WRAPPED(noexcept, int, fstat, (int f, struct stat* s), f, s)
WRAPPED(noexcept, int, flock, (int f, int o), f, o)
WRAPPED(noexcept, int, fchown, (int f, uid_t u, gid_t g), f, u, g)
WRAPPED(noexcept, int, fchmod, (int f, mode_t m), f, m)
WRAPPED(noexcept, ssize_t, flistxattr, (int f, char* b, size_t n), f, b, n)
WRAPPED(noexcept, ssize_t, fgetxattr, (int f, const char* k, void* b, size_t n), f, k, b, n)
WRAPPED(noexcept, int, fsetxattr, (int f, const char* k, const void* b, size_t n, int o), f, k, b, n, o)
WRAPPED(noexcept, int, fremovexattr, (int f, const char* k), f, k)
WRAPPED(noexcept, int, rename, (const char* a, const char* b), a, b)
WRAPPED(noexcept, int, renameat2, (int f, const char* a, int g, const char* b, unsigned o), f, a, g, b, o)
WRAPPED(noexcept, int, link, (const char* a, const char* b), a, b)
WRAPPED(noexcept, int, unlink, (const char* a), a)
WRAPPED(noexcept, int, mkdir, (const char* a, mode_t m), a, m)
WRAPPED(noexcept, int, faccessat, (int f, const char* a, int m, int o), f, a, m, o)
WRAPPED(noexcept, ssize_t, readlink, (const char* a, char* b, size_t n), a, b, n)
WRAPPED(noexcept, int, statx, (int f, const char* a, int o, unsigned m, struct statx* s), f, a, o, m, s)

// Their last argument, a number or a pointer, is not always there; nobody looks at it then.
#define WRAPPED_OPEN_ENDED(name, subject)                                                                              \
    extern "C" int name(subject s, int order, ...) {                                                                   \
        __builtin_va_list arguments;                                                                                   \
        __builtin_va_start(arguments, order);                                                                          \
        const auto argument = __builtin_va_arg(arguments, long);                                                       \
        __builtin_va_end(arguments);                                                                                   \
        return passed<int>(#name, s, order, argument);                                                                 \
    }

WRAPPED_OPEN_ENDED(fcntl, int)
WRAPPED_OPEN_ENDED(open, const char*)

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

struct Saving {
    const Way way;
    const std::string old = way == Way::ofANewFile ? "" : longText;
    const SafeFileWorld world{};

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

constexpr int notPermitted = 77;

bool mountSmallDisk(const Path& at) {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", at.c_str(), "tmpfs", 0, "size=256k") == 0;
}

// Lets the text grow until nothing more fits, and on. 0 when some edits were saved whole, and then all were refused
// for that reason with the file as it was.
int growUntilRefused(const SafeFileWorld& world, const std::string& reason) {
    const std::string block(4'000, 'b');
    int saved = 0, refused = 0;
    for (int round = 0; round < 60; ++round) {
        const auto before = world.text();
        const auto failure = world.failure([&](auto text) { return std::string(text) + block; });
        if (!failure.empty() && failure != reason) return 1;
        if (world.text() != (failure.empty() ? before + block : before)) return 2;
        ++(failure.empty() ? saved : refused);
    }
    return saved > 0 && refused > 0 ? 0 : 3;
}

}

TEST(SafeFile, SurvivesAFaultAtEachSystemCall) {
    for (const auto way : {Way::byExchange, Way::inPlace, Way::ofANewFile})
        for (const auto kind : {Fault::Kind::once, Fault::Kind::forGood, Fault::Kind::kill}) {
            const Saving saving{way};
            saving.prepare();
            const int count = saving.calls();
            ASSERT_GT(count, 15);
            for (int call = 0; call < count; ++call) {
                SCOPED_TRACE(::testing::Message() << "way " << int(way) << ", kind " << int(kind) << ", call " << call);
                saving.prepare();
                saving.expectWhole(kind, saving.saveUnder(kind, call));
                saving.expectNextEditWhole();
            }
        }
}

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
        const auto make = [&] { std::filesystem::create_directories(world.locks); };
        const Fault other("mkdir", make, EEXIST);
        EXPECT_EQ(world.failure(), "");
    }
    const Fault sweeper("flock", [&] { std::filesystem::remove(*std::filesystem::directory_iterator(world.locks)); });
    EXPECT_EQ(world.failure(), "");
}

TEST(SafeFile, KeepsTheOldFileWhenTheDiskFillsUp) {
    for (const bool hardLinked : {false, true}) {
        const SafeFileWorld world;
        const int status = inChild([&] {
            if (!mountSmallDisk(world.list)) return notPermitted;
            writeBytes(world.file, mark);
            if (hardLinked) std::filesystem::create_hard_link(world.file, world.list / "other.md");
            const int failure = growUntilRefused(world, "Il n'y a plus de place sur le disque");
            return failure == 0 && world.entries() != (hardLinked ? 2 : 1) ? 4 : failure;
        });
        if (status == notPermitted) GTEST_SKIP() << "mounting a small disk is not permitted here";
        EXPECT_EQ(status, 0) << (hardLinked ? "in place" : "by exchange");
    }
}

TEST(SafeFile, KeepsTheOldFileAtTheFileSizeLimit) {
    const SafeFileWorld world;
    EXPECT_EQ(inChild([&] {
                  ::signal(SIGXFSZ, SIG_IGN);
                  const rlimit limit{32'000, 32'000};
                  ::setrlimit(RLIMIT_FSIZE, &limit);
                  return growUntilRefused(world, "Le fichier est trop volumineux");
              }),
              0);
}
