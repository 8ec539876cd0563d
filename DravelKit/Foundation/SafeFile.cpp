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

// The one lock under which all processes of this program change a file. Waits for a while, then throws FileError
// (busy).
OpenFile acquired(const Path& path, const Path& target) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (true) {
        if (auto lock = tryLock(path)) return std::move(*lock);
        if (std::chrono::steady_clock::now() >= deadline) throw FileError(FileError::Kind::busy, target);
        std::this_thread::sleep_for(pause);
    }
}

OpenFile locked(const Path& target, const Path& lockFolder) {
    makeFolders(lockFolder);
    const auto digest = sha256(target.native());
    return acquired(lockFolder / (base64Url(std::span(digest).first(18)) + ".lock"), target);
}

void requireUtf8(const Path& path, std::string_view text) {
    if (!isValidUtf8(text)) throw FileError(FileError::Kind::notUtf8, path);
}

enum class Missing { isAnError, isEmpty };

std::optional<Change> editLocked(const Path& path, const Edit& edit, const Path& lockFolder, Missing missing) {
    const Path target = followedLinks(path);
    const auto lock = locked(target, lockFolder);
    finishInterruptedWrite(target);
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const auto before = missing == Missing::isEmpty ? Snapshot::ifThere(target) : Snapshot::of(target);
        const std::string text = before ? before->text : "";
        requireUtf8(path, text);
        auto after = edit(text);
        if (!after || *after == text) return {};
        requireUtf8(path, *after);
        removeLeftovers(target);
        if (replaceFile(target, before, *after)) return Change{text, std::move(*after)};
    }
    throw FileError(FileError::Kind::changed, path);
}

}

std::optional<Modified> modified(const Path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return {};
    return Modified{status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

std::string readText(const Path& path) {
    auto text = Snapshot::of(path).text;
    requireUtf8(path, text);
    return text;
}

void readByLines(const Path& path, const std::function<void(std::string_view)>& visit) {
    openToRead(path).readByLines([&](std::string_view lines) {
        requireUtf8(path, lines);
        visit(lines);
    });
}

std::optional<Change> edit(const Path& path, const Edit& edit, const Path& lockFolder) {
    return editLocked(path, edit, lockFolder, Missing::isAnError);
}

std::optional<Change> editOwn(const Path& path, const Edit& edit, const Path& lockFolder) {
    makeFolders(followedLinks(path).parent_path());
    return editLocked(path, edit, lockFolder, Missing::isEmpty);
}

bool create(const Path& path, std::string_view text) {
    const Path target = followedLinks(path);
    makeFolders(target.parent_path());
    return makeFile(target, text, 0666); // the user's own umask decides
}

bool moveAside(const Path& path, const Path& aside, const std::function<bool()>& mustGo, const Path& lockFolder) {
    const Path target = followedLinks(path);
    const auto lock = locked(target, lockFolder);
    if (!mustGo()) return false;
    if (::rename(target.c_str(), aside.c_str()) != 0) throwSystemError(path);
    return true;
}

}
