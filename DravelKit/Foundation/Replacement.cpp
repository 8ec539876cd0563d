#include "DravelKit/Foundation/Replacement.h"

#include "DravelKit/Foundation/Text.h"

#include <acl/libacl.h>
#include <attr/libattr.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>
#include <vector>

namespace dravel {

namespace {

using Path = std::filesystem::path;

constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz012345";
constexpr std::size_t suffixLength = 6, longestName = 255;

// For a program that has the file open to write: most are soon done, and the window must not stand still for the
// others.
constexpr auto writersPatience = std::chrono::milliseconds(150), writersPause = std::chrono::milliseconds(4);

// The hidden name beside the target that ends so: ".taches.md.tacla-" and the ending.
Path nameBeside(const Path& target, std::string_view ending) {
    const std::string mark = ".tacla-" + std::string(ending);
    return target.parent_path() / ("." + target.filename().string().substr(0, longestName - 1 - mark.size()) + mark);
}

Path freshName(const Path& target) {
    std::array<unsigned char, suffixLength> random{};
    if (::getentropy(random.data(), random.size()) != 0) throwSystemError(target);
    std::string suffix;
    for (const auto byte : random) suffix += letters[byte % letters.size()];
    return nameBeside(target, suffix);
}

// A new version of a file, written beside it as ".taches.md.tacla-XXXXXX" and gone with this object unless it was given
// its final name. While its maker lives, it holds a lock: that tells it from the leftovers of a killed one.
class TemporaryFile {
  public:
    TemporaryFile(const std::filesystem::path& target, mode_t mode);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::filesystem::path& path() const { return path_; }
    const OpenFile& file() const { return file_; }

    bool publishAsNew(const std::filesystem::path& target); // false when something of that name exists
    void publishOver(const std::filesystem::path& target);  // in place of what is there
    void keep() { mine_ = false; }                          // leaves what is at this path

  private:
    std::filesystem::path path_;
    OpenFile file_;
    bool mine_ = true;
};

TemporaryFile::TemporaryFile(const Path& target, mode_t mode)
    : path_(freshName(target)), file_(path_, O_RDWR | O_CREAT | O_EXCL, mode) {
    try {
        file_.lock();
    } catch (const FileError&) { // a file system without locks: leftovers are then all that is not ours
    }
}

TemporaryFile::~TemporaryFile() {
    if (mine_) ::unlink(path_.c_str());
}

bool TemporaryFile::publishAsNew(const Path& target) {
    if (!renameAsNew(path_, target)) return false;
    mine_ = false;
    return true;
}

void TemporaryFile::publishOver(const Path& target) {
    if (::rename(path_.c_str(), target.c_str()) != 0) throwSystemError(target);
    mine_ = false;
}

// Opened to be synced. In one whose files cannot be removed each save would leave something behind.
OpenFile folderOf(const Path& target) {
    OpenFile folder(target.parent_path(), O_RDONLY | O_DIRECTORY);
    struct statx status = {};
    if (::statx(folder.descriptor(), "", AT_EMPTY_PATH, 0, &status) == 0 &&
        (status.stx_attributes & STATX_ATTR_APPEND) != 0)
        throw FileError(FileError::Kind::system, target, EPERM);
    return folder;
}

// Gives a new version of a file the owner, group, mode, access list and extended attributes of the old one.
// False when the system does not let us: a rename would then lose something of the user's.
bool copyAttributes(const OpenFile& from, const OpenFile& to) {
    const auto old = from.status();
    const auto fresh = to.status();
    const int source = from.descriptor(), copy = to.descriptor();
    if ((fresh.st_uid != old.st_uid || fresh.st_gid != old.st_gid) && ::fchown(copy, old.st_uid, old.st_gid) != 0)
        return false;
    // The mode after the owner, whose change touches it.
    return ::attr_copy_fd("", source, "", copy, nullptr, nullptr) == 0 &&
           ::perm_copy_fd("", source, "", copy, nullptr) == 0;
}

// While it lives, whoever opens the file to write into it has to wait, and is noticed: what a program writes after the
// exchange would go into a file without a name. Neither a network's file system nor somebody else's file has this.
class Lease {
  public:
    // Waits a little for whoever has the file open, then throws FileError (open).
    Lease(const OpenFile& file, const Path& target) : descriptor_(file.descriptor()) {
        const auto deadline = std::chrono::steady_clock::now() + writersPatience;
        while (!tried()) {
            if (std::chrono::steady_clock::now() >= deadline) throw FileError(FileError::Kind::open, target);
            std::this_thread::sleep_for(writersPause);
        }
    }
    ~Lease() {
        if (held_) ::fcntl(descriptor_, F_SETLEASE, F_UNLCK);
    }
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;

    // Whether somebody waits, who gets in when it ends.
    bool isWanted() const { return held_ && ::fcntl(descriptor_, F_GETLEASE) != F_RDLCK; }

  private:
    // False while somebody has the file open to write. The usual signal would end the process; this one is ignored.
    bool tried() {
        if (::fcntl(descriptor_, F_SETSIG, SIGURG) != 0) return true;
        held_ = ::fcntl(descriptor_, F_SETLEASE, F_RDLCK) == 0;
        return held_ || errno != EAGAIN;
    }

    int descriptor_;
    bool held_ = false;
};

void requireNoWriter(const OpenFile& file, const Path& target) { const Lease lease(file, target); }

constexpr std::string_view oldText = "old-text-", newText = "new-text-", digits = "0123456789";
constexpr std::size_t userLength = 10;

// Both versions of a file that is being written in place, each user's own.
struct Copies {
    Path before, after;

    Copies(const Path& target, const std::string& user)
        : before(nameBeside(target, std::string(oldText) + user)),
          after(nameBeside(target, std::string(newText) + user)) {}
    static Copies ownOf(const Path& target) {
        std::string user;
        appendPadded(user, ::geteuid(), userLength);
        return {target, user};
    }
    void remove() const {
        ::unlink(after.c_str());
        ::unlink(before.c_str());
    }
};

// Whoever may write the file may read the copy: after a kill another user may have to finish.
void save(const Path& target, const Path& copy, const Identity& like, std::string_view text) {
    TemporaryFile temporary(target, 0600);
    const int descriptor = temporary.file().descriptor();
    if (::fchown(descriptor, static_cast<uid_t>(-1), like.group) == 0) ::fchmod(descriptor, like.mode & 0666);
    temporary.file().overwrite(text);
    temporary.publishOver(copy);
}

// Each byte from one of the two versions: what a write or a power cut in the middle leaves, and no editor does.
bool isMixture(std::string_view text, std::string_view before, std::string_view after) {
    const auto [shortest, longest] = std::minmax({before.size(), after.size()});
    if (text.size() < shortest || text.size() > longest) return false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool old = at < before.size() && text[at] == before[at];
        if (!old && !(at < after.size() && text[at] == after[at])) return false;
    }
    return true;
}

void overwriteOrRestore(const OpenFile& file, const Copies& copies, std::string_view before, std::string_view after) {
    try {
        file.overwrite(after);
    } catch (const FileError&) {
        file.overwrite(before); // when this fails too, the copies stay for the next process
        copies.remove();
        throw;
    }
}

// For a file that a rename would tear from its hard links, its owner or its mount: writes over it, with both versions
// kept beside it, synced, until the new one is on the disk. False when the file is no longer what was read.
bool writeInPlace(const Path& target, const Snapshot& before, std::string_view after) {
    requireNoWriter(before.file, target);
    const OpenFile file(target, O_WRONLY | O_NONBLOCK);
    const auto folder = folderOf(target);
    const auto copies = Copies::ownOf(target);
    try {
        save(target, copies.after, before.identity, after);
        save(target, copies.before, before.identity, before.text);
        folder.sync();
        if (Snapshot::of(target) != before || !Identity::of(file.status()).sameFile(before.identity)) {
            copies.remove();
            return false;
        }
    } catch (const FileError&) {
        copies.remove();
        throw;
    }
    overwriteOrRestore(file, copies, before.text, after);
    copies.remove();
    return true;
}

bool swap(const Path& a, const Path& b) {
    return ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0;
}

bool isAt(const Path& path, const OpenFile& file) {
    struct stat there = {};
    return ::stat(path.c_str(), &there) == 0 && Identity::of(there).sameFile(Identity::of(file.status()));
}

// Undoes the exchange. Whoever saved over our version in between wins: then theirs goes back to its place.
void giveBack(TemporaryFile& temporary, const Path& target) {
    if (!swap(temporary.path(), target)) {
        temporary.keep(); // it is the old file that stands there
        return;
    }
    if (!isAt(temporary.path(), temporary.file())) swap(temporary.path(), target);
}

// True when what the exchange brought out is still what was read, and nobody waits to write into it: an editor may have
// saved after the last look at it.
bool broughtOut(const TemporaryFile& temporary, const Snapshot& before, const Lease& lease) {
    const auto old = Snapshot::of(temporary.path());
    return old.identity.sameFile(before.identity) && old.text == before.text && !lease.isWanted();
}

enum class Exchange { done, changed, impossible };

Exchange exchange(TemporaryFile& temporary, const Path& target, const Snapshot& before, const OpenFile& folder) {
    const Lease lease(before.file, target); // lets those in who wait once all stands at its place
    if (Snapshot::ifThere(target) != before) return Exchange::changed;
    if (!swap(temporary.path(), target)) {
        switch (errno) {
        case ENOENT: return Exchange::changed;
        case EBUSY:
        case EXDEV: return Exchange::impossible; // the file itself is a mount
        case EINVAL:
        case ENOSYS: // a file system that can only replace
            if (lease.isWanted()) return Exchange::changed;
            temporary.publishOver(target);
            folder.sync();
            return Exchange::done;
        default: throwSystemError(target);
        }
    }
    try {
        folder.sync();
        if (!broughtOut(temporary, before, lease)) {
            giveBack(temporary, target);
            return Exchange::changed;
        }
    } catch (const FileError&) {
        giveBack(temporary, target);
        throw;
    }
    return Exchange::done;
}

bool isLeftover(const Path& path) {
    const auto file = OpenFile::ifThere(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    return file && S_ISREG(file->status().st_mode) && file->lock();
}

// The endings, of that length and out of these letters, of the names beside the target that begin so.
std::vector<std::string> endingsBeside(const Path& target, std::string_view beginning, std::size_t length,
                                       std::string_view alphabet) {
    const std::string pattern =
        nameBeside(target, std::string(beginning) + std::string(length, '?')).filename().string();
    const std::string_view start = std::string_view(pattern).substr(0, pattern.size() - length);
    std::vector<std::string> endings;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(target.parent_path(), error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename();
        if (name.size() != pattern.size() || !name.starts_with(start)) continue;
        if (name.find_first_not_of(alphabet, start.size()) == name.npos) endings.push_back(name.substr(start.size()));
    }
    return endings;
}

// Those who may write the file may tell what was to stand in it.
bool isTrusted(const Identity& copy, const Identity& file) {
    return copy.owner == file.owner || copy.owner == ::geteuid() || copy.owner == 0 || (file.mode & S_IWOTH) != 0 ||
           ((file.mode & S_IWGRP) != 0 && copy.group == file.group);
}

void finish(const Path& target, const Copies& copies) try {
    const auto before = Snapshot::ifThere(copies.before), after = Snapshot::ifThere(copies.after);
    if (before && after) {
        const auto now = Snapshot::ifThere(target);
        const bool whole = !now || now->text == before->text || now->text == after->text;
        if (!whole && isTrusted(before->identity, now->identity) && isTrusted(after->identity, now->identity) &&
            isMixture(now->text, before->text, after->text))
            OpenFile(target, O_WRONLY).overwrite(before->text);
    }
    copies.remove();
} catch (const FileError& error) {
    const bool isForeign = error.kind == FileError::Kind::notRegular || error.code == EACCES || error.code == EISDIR;
    if (error.path == target || !isForeign) throw;
    copies.remove(); // where that is not permitted, they stay
}

}

bool renameAsNew(const Path& from, const Path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno == EINVAL || errno == ENOSYS) { // not every file system knows the flag; a link refuses as well
        if (::link(from.c_str(), to.c_str()) == 0) {
            ::unlink(from.c_str());
            return true;
        }
    }
    if (errno == EEXIST) return false;
    throwSystemError(to);
}

bool makeFile(const Path& target, std::string_view text, mode_t mode) {
    const auto folder = folderOf(target);
    TemporaryFile temporary(target, mode);
    temporary.file().joinItsFolder();
    temporary.file().overwrite(text);
    if (!temporary.publishAsNew(target)) return false;
    folder.sync();
    return true;
}

bool replaceFile(const Path& target, const std::optional<Snapshot>& before, std::string_view after) {
    if (!before) return makeFile(target, after, 0600);
    const auto folder = folderOf(target); // first: without it nothing could be synced
    if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) throwSystemError(target);
    if (before->identity.links > 1) return writeInPlace(target, *before, after);

    TemporaryFile temporary(target, 0600);
    if (!copyAttributes(before->file, temporary.file())) return writeInPlace(target, *before, after);
    temporary.file().overwrite(after);
    switch (exchange(temporary, target, *before, folder)) {
    case Exchange::done: return true;
    case Exchange::changed: return false;
    case Exchange::impossible: break;
    }
    return writeInPlace(target, *before, after);
}

void finishInterruptedWrite(const Path& target) {
    for (const auto& beginning : {oldText, newText})
        for (const auto& user : endingsBeside(target, beginning, userLength, digits)) finish(target, {target, user});
}

void removeLeftovers(const Path& target) {
    for (const auto& suffix : endingsBeside(target, {}, suffixLength, letters)) {
        const auto path = nameBeside(target, suffix);
        try {
            if (isLeftover(path)) ::unlink(path.c_str());
        } catch (const FileError&) { // somebody else's, most likely
        }
    }
}

}
