#pragma once

#include "DravelKit/Foundation/FileError.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// Plain files of the system, every failure a FileError that names the path.
namespace dravel {

[[noreturn]] void throwSystemError(const std::filesystem::path&); // of errno

class OpenFile {
  public:
    using Path = std::filesystem::path;

    OpenFile(Path, int flags, mode_t mode = 0);
    static std::optional<OpenFile> ifThere(const Path&, int flags);
    OpenFile(OpenFile&& other) noexcept
        : path_(std::move(other.path_)), descriptor_(std::exchange(other.descriptor_, -1)) {}
    OpenFile& operator=(OpenFile&&) = delete;
    ~OpenFile();

    int descriptor() const { return descriptor_; }
    struct stat status() const;
    bool lock() const; // an advisory lock that ends with the descriptor; false when another one holds it

    std::string readAll() const; // regular files only
    // The same in pieces that end with a line, but for the last one.
    void readByLines(const std::function<void(std::string_view lines)>&) const;
    void write(std::string_view bytes) const;     // at the start
    void overwrite(std::string_view bytes) const; // in place: the bytes, the length, and down to the disk
    void sync() const;
    // What root has just made in a user's folder is that user's. Best effort.
    void joinItsFolder() const;

  private:
    std::size_t length() const;
    std::size_t readAt(std::size_t offset, char* to, std::size_t size) const;

    struct Opened {
        int descriptor;
    };
    OpenFile(Path path, Opened opened) : path_(std::move(path)), descriptor_(opened.descriptor) {}

    Path path_;
    int descriptor_;
};

// The lock over all processes that stands for this file, which is made where missing and stays; none while another one
// holds it. Dropping it ends the lock, as does the end of its holder, however it comes.
inline constexpr int lockFileFlags = O_RDWR | O_CREAT | O_NOFOLLOW;
std::optional<OpenFile> tryLock(const std::filesystem::path&, int flags = lockFileFlags);

OpenFile openToRead(const std::filesystem::path&);

// What makes a file the same one as a moment ago, besides its bytes.
struct Identity {
    dev_t device;
    ino_t inode;
    nlink_t links;
    mode_t mode;
    uid_t owner;
    gid_t group;
    std::int64_t changedSeconds, changedNanoseconds;

    static Identity of(const struct stat&);
    bool sameFile(const Identity& other) const { return device == other.device && inode == other.inode; }
    bool operator==(const Identity&) const = default;
};

// The absolute path that the links lead to, also when nothing is there yet. Throws FileError (a loop, an unreadable
// folder).
std::filesystem::path followedLinks(const std::filesystem::path&);

// The folder and those above it, 0700 where missing; in a user's folder, that user's.
void makeFolders(const std::filesystem::path&);

// A file as it was read. Keeps it open, for the attributes that a new version must take over.
struct Snapshot {
    OpenFile file;
    Identity identity;
    std::string text;

    static Snapshot of(const std::filesystem::path&);
    static std::optional<Snapshot> ifThere(const std::filesystem::path&);
    bool operator==(const Snapshot& other) const { return identity == other.identity && text == other.text; }
};

}
