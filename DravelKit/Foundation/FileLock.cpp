#include "DravelKit/Foundation/FileLock.h"

#include "DravelKit/Foundation/FilePaths.h"
#include "DravelKit/Foundation/Hash.h"

#include <fcntl.h>

#include <chrono>
#include <thread>

namespace dravel {

namespace {

using Path = std::filesystem::path;

constexpr auto patience = std::chrono::seconds(2);
constexpr auto pause = std::chrono::milliseconds(4);

// Runtime folders are swept of old files: a lock on a file that is no longer at its name excludes nobody.
bool stillThere(const OpenFile& file, const Path& path) {
    struct stat now {};
    return ::stat(path.c_str(), &now) == 0 && Identity::of(now).sameFile(Identity::of(file.status()));
}

OpenFile acquired(const Path& path, const Path& target) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (true) {
        OpenFile file(path, O_RDWR | O_CREAT | O_NOFOLLOW, 0600);
        while (!file.lock()) {
            if (std::chrono::steady_clock::now() >= deadline) throw FileError(FileError::Kind::busy, target);
            std::this_thread::sleep_for(pause);
        }
        if (stillThere(file, path)) return file;
    }
}

Path lockPath(const Path& target, const Path& lockFolder) {
    const auto digest = sha256(target.native());
    return lockFolder / (base64Url(std::span(digest).first(18)) + ".lock");
}

}

FileLock::FileLock(const Path& target, const Path& lockFolder)
    : file_((makeFolders(lockFolder), acquired(lockPath(target, lockFolder), target))) {}

}
