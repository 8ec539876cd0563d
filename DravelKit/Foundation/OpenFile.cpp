#include "DravelKit/Foundation/OpenFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace dravel {

namespace {

// A task list is text written by hand: beyond this it is something else, or a sparse file that would eat all memory.
constexpr off_t largestFile = off_t{1} << 30;

int openRetrying(const std::filesystem::path& path, int flags, mode_t mode) {
    int descriptor = -1;
    do descriptor = ::open(path.c_str(), flags | O_CLOEXEC, mode);
    while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

}

void throwSystemError(const std::filesystem::path& path) { throw FileError(FileError::Kind::system, path, errno); }

OpenFile::OpenFile(Path path, int flags, mode_t mode)
    : path_(std::move(path)), descriptor_(openRetrying(path_, flags, mode)) {
    if (descriptor_ < 0) throwSystemError(path_);
}

std::optional<OpenFile> OpenFile::ifThere(const Path& path, int flags) {
    const int descriptor = openRetrying(path, flags, 0);
    if (descriptor < 0 && errno == ENOENT) return {};
    if (descriptor < 0) throwSystemError(path);
    return OpenFile(path, Opened{descriptor});
}

OpenFile::~OpenFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

struct stat OpenFile::status() const {
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) throwSystemError(path_);
    return status;
}

bool OpenFile::lock() const {
    while (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK) return false;
        if (errno != EINTR) throwSystemError(path_);
    }
    return true;
}

std::string OpenFile::readAll() const {
    const auto status = this->status();
    if (S_ISDIR(status.st_mode)) throw FileError(FileError::Kind::system, path_, EISDIR);
    if (!S_ISREG(status.st_mode)) throw FileError(FileError::Kind::notRegular, path_);
    if (status.st_size > largestFile) throw FileError(FileError::Kind::system, path_, EFBIG);
    // One byte more than expected: the end is then seen without growing the text.
    std::string text(static_cast<std::size_t>(status.st_size) + 1, '\0');
    std::size_t length = 0;
    while (true) {
        const auto count = ::pread(descriptor_, text.data() + length, text.size() - length, static_cast<off_t>(length));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throwSystemError(path_);
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
        if (length == text.size()) text.resize(text.size() * 2); // it grew while we read
    }
    text.resize(length);
    return text;
}

void OpenFile::overwrite(std::string_view bytes) const {
    std::size_t length = 0;
    while (length < bytes.size()) {
        const auto count =
            ::pwrite(descriptor_, bytes.data() + length, bytes.size() - length, static_cast<off_t>(length));
        if (count < 0 && errno == EINTR) continue;
        if (count == 0) errno = EIO;
        if (count <= 0) throwSystemError(path_);
        length += static_cast<std::size_t>(count);
    }
    if (::ftruncate(descriptor_, static_cast<off_t>(bytes.size())) != 0) throwSystemError(path_);
    sync();
}

void OpenFile::sync() const {
    while (::fsync(descriptor_) != 0) {
        if (errno == EINVAL) return; // a file system without such a thing, for folders mostly
        if (errno != EINTR) throwSystemError(path_);
    }
}

Identity Identity::of(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_nlink,       status.st_mode,
            status.st_uid, status.st_gid, status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

namespace {

// O_NONBLOCK: a pipe without a writer must be refused, not waited for.
constexpr int readFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY;

Snapshot snapshotOf(OpenFile file) {
    const auto identity = Identity::of(file.status());
    auto text = file.readAll();
    return {std::move(file), identity, std::move(text)};
}

}

Snapshot Snapshot::of(const std::filesystem::path& path) { return snapshotOf(OpenFile(path, readFlags)); }

std::optional<Snapshot> Snapshot::ifThere(const std::filesystem::path& path) {
    auto file = OpenFile::ifThere(path, readFlags);
    if (!file) return {};
    return snapshotOf(std::move(*file));
}

}
