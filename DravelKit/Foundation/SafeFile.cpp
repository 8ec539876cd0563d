#include "DravelKit/Foundation/SafeFile.h"

#include "DravelKit/Foundation/Hash.h"
#include "DravelKit/Foundation/OpenFile.h"
#include "DravelKit/Foundation/Replacement.h"
#include "DravelKit/Foundation/Text.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <thread>

namespace dravel::SafeFile {

namespace {

constexpr auto patience = std::chrono::seconds(2);
constexpr auto pause = std::chrono::milliseconds(4);
constexpr int mostAttempts = 1 + 3; // an editor may save in between three times
constexpr int mostAside = 1000;

// The one lock under which all processes of this program change a file: advisory, and gone with its holder however that
// one ends. Its file stands in the lock folder and stays there. Waits for a while, then throws FileError (busy).
OpenFile acquired(const Path& path, int flags, const Path& target) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (true) {
        if (auto lock = tryLock(path, flags)) return std::move(*lock);
        if (std::chrono::steady_clock::now() >= deadline) throw FileError(FileError::Kind::busy, target);
        std::this_thread::sleep_for(pause);
    }
}

OpenFile lockedIn(const Path& lockFolder, const Path& target) {
    makeFolders(lockFolder);
    const auto digest = sha256(target.native());
    const Path path = lockFolder / (base64Url(std::span(digest).first(18)) + ".lock");
    try {
        return acquired(path, lockFileFlags, target);
    } catch (const FileError& error) { // somebody else's: the folder's owner may always make a new one
        if (error.code != EACCES || ::unlink(path.c_str()) != 0) throw;
    }
    return acquired(path, lockFileFlags, target);
}

// A home that cannot be written, no session, a full runtime folder: then the list's own folder is what all meet at.
OpenFile locked(const Path& target, const Path& lockFolder) {
    try {
        return lockedIn(lockFolder, target);
    } catch (const FileError& error) {
        if (error.kind == FileError::Kind::busy) throw;
    }
    return acquired(target.parent_path(), O_RDONLY | O_DIRECTORY, target);
}

// Another name of the file, another session's lock folder, another user: they all meet at the file itself. None when
// there is nothing to lock; reading it tells why.
std::optional<OpenFile> lockedItself(const Path& target) try {
    return acquired(target, O_RDONLY | O_NONBLOCK | O_NOCTTY, target);
} catch (const FileError& error) {
    if (error.kind == FileError::Kind::busy) throw;
    return {};
}

void requireUtf8(const Path& path, std::string_view text) {
    if (!isValidUtf8(text)) throw FileError(FileError::Kind::notUtf8, path);
}

enum class Missing { isAnError, isEmpty };

std::optional<Change> editLocked(const Path& path, const Edit& edit, const Path& lockFolder, Missing missing) {
    const Path target = followedLinks(path);
    const auto lock = locked(target, lockFolder);
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const auto fileLock = lockedItself(target);
        finishInterruptedWrite(target);
        auto before = missing == Missing::isEmpty ? Snapshot::ifThere(target) : Snapshot::of(target);
        const std::string_view text = before ? std::string_view(before->text) : "";
        requireUtf8(path, text);
        auto after = edit(text);
        if (!after || *after == text) return {};
        requireUtf8(path, *after);
        removeLeftovers(target);
        if (replaceFile(target, before, *after))
            return Change{before ? std::move(before->text) : "", std::move(*after)};
    }
    throw FileError(FileError::Kind::changed, path);
}

}

std::optional<Modified> modified(const Path& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) return {};
    return Modified{status.st_mtim.tv_sec,  status.st_mtim.tv_nsec, status.st_ctim.tv_sec,
                    status.st_ctim.tv_nsec, status.st_size,         status.st_ino};
}

std::string readText(const Path& path) {
    auto text = Snapshot::of(path).text;
    requireUtf8(path, text);
    return text;
}

void readByLines(const Path& path, const std::function<void(std::string_view)>& take) {
    openToRead(path).readByLines([&](std::string_view lines) {
        requireUtf8(path, lines);
        take(lines);
    });
}

std::optional<Change> edit(const Path& path, const Edit& edit, const Path& lockFolder) {
    return editLocked(path, edit, lockFolder, Missing::isAnError);
}

std::optional<Change> editOwn(const Path& path, const Edit& edit, const Path& lockFolder) {
    makeFolders(followedLinks(path).parent_path());
    return editLocked(path, edit, lockFolder, Missing::isEmpty);
}

void replaceOwn(const Path& path, const std::string& text, const Path& lockFolder) {
    const auto whole = [&](std::string_view) { return std::optional(text); };
    editOwn(path, whole, lockFolder);
}

bool create(const Path& path, std::string_view text) {
    const Path target = followedLinks(path);
    makeFolders(target.parent_path());
    return makeFile(target, text, 0666); // the user's own umask decides
}

std::optional<Path> moveAside(const Path& path, const std::string& ending, const std::function<bool()>& mustGo,
                              const Path& lockFolder) {
    const Path target = followedLinks(path);
    const auto lock = locked(target, lockFolder);
    if (!mustGo()) return {};
    for (int nth = 1; nth <= mostAside; ++nth) {
        Path aside = target.native() + ending + (nth == 1 ? "" : "-" + std::to_string(nth));
        if (renameAsNew(target, aside)) return aside;
    }
    throw FileError(FileError::Kind::system, path, EEXIST);
}

}
