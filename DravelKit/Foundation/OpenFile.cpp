#include "DravelKit/Foundation/OpenFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace dravel {

namespace {

using Path = std::filesystem::path;

// A task list is text written by hand: beyond this it is something else, or a sparse file that would eat all memory.
constexpr off_t largestFile = off_t{1} << 30;

// Fits in the processor's cache.
constexpr std::size_t largestPiece = std::size_t{1} << 18;

int openRetrying(const Path& path, int flags, mode_t mode) {
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
    struct stat status = {};
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

// Of a file that can be read as a text.
std::size_t OpenFile::length() const {
    const auto status = this->status();
    if (S_ISDIR(status.st_mode)) throw FileError(FileError::Kind::system, path_, EISDIR);
    if (!S_ISREG(status.st_mode)) throw FileError(FileError::Kind::notRegular, path_);
    if (status.st_size > largestFile) throw FileError(FileError::Kind::system, path_, EFBIG);
    return static_cast<std::size_t>(status.st_size);
}

std::size_t OpenFile::readAt(std::size_t offset, char* to, std::size_t size) const {
    ssize_t count = -1;
    do count = ::pread(descriptor_, to, size, static_cast<off_t>(offset));
    while (count < 0 && errno == EINTR);
    if (count < 0) throwSystemError(path_);
    return static_cast<std::size_t>(count);
}

std::string OpenFile::readAll() const {
    // One byte more than expected: the end is then seen without growing the text.
    std::string text(length() + 1, '\0');
    std::size_t filled = 0;
    while (const auto count = readAt(filled, text.data() + filled, text.size() - filled)) {
        filled += count;
        if (filled == text.size()) text.resize(text.size() * 2); // it grew while we read
    }
    text.resize(filled);
    return text;
}

void OpenFile::readByLines(const std::function<void(std::string_view)>& take) const {
    std::string piece(std::min(length() + 1, largestPiece), '\0');
    std::size_t offset = 0, kept = 0; // the start of a line whose end is still to come
    while (const auto count = readAt(offset, piece.data() + kept, piece.size() - kept)) {
        offset += count;
        const std::string_view filled(piece.data(), kept + count);
        const auto lastBreak = filled.substr(kept).rfind('\n');
        const auto end = lastBreak == filled.npos ? 0 : kept + lastBreak + 1;
        if (end > 0) take(filled.substr(0, end));
        kept = filled.size() - end;
        std::ranges::copy(filled.substr(end), piece.begin());
        if (kept == piece.size()) piece.resize(piece.size() * 2);
    }
    if (kept > 0) take(std::string_view(piece).substr(0, kept));
}

void OpenFile::overwrite(std::string_view bytes) const {
    write(bytes);
    if (::ftruncate(descriptor_, static_cast<off_t>(bytes.size())) != 0) throwSystemError(path_);
    sync();
}

void OpenFile::write(std::string_view bytes) const {
    std::size_t length = 0;
    while (length < bytes.size()) {
        const auto count =
            ::pwrite(descriptor_, bytes.data() + length, bytes.size() - length, static_cast<off_t>(length));
        if (count < 0 && errno == EINTR) continue;
        if (count == 0) errno = EIO;
        if (count <= 0) throwSystemError(path_);
        length += static_cast<std::size_t>(count);
    }
}

void OpenFile::sync() const {
    while (::fsync(descriptor_) != 0) {
        if (errno == EINVAL) return; // a file system without such a thing, for folders mostly
        if (errno != EINTR) throwSystemError(path_);
    }
}

// Whoever owns the folder could have put another file's second name here: that one stays whose it is.
void OpenFile::joinItsFolder() const {
    if (::geteuid() != 0) return;
    const auto own = status();
    struct stat folder = {};
    const bool isOurs = own.st_uid == 0 && (own.st_nlink == 1 || S_ISDIR(own.st_mode));
    if (!isOurs || ::stat(path_.parent_path().c_str(), &folder) != 0 || folder.st_uid == 0) return;
    if (::fchown(descriptor_, folder.st_uid, folder.st_gid) != 0) return;
}

Identity Identity::of(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_nlink,       status.st_mode,
            status.st_uid, status.st_gid, status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
}

namespace {

constexpr int mostLinks = 40; // the system's own limit

std::optional<Path> linkTarget(const Path& path) {
    std::string target(PATH_MAX, '\0');
    const auto length = ::readlink(path.c_str(), target.data(), target.size());
    if (length < 0 && (errno == EINVAL || errno == ENOENT)) return {};
    if (length < 0) throwSystemError(path);
    target.resize(static_cast<std::size_t>(length));
    return Path(target);
}

// O_NONBLOCK: a pipe without a writer must be refused, not waited for.
constexpr int readFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY;

Snapshot snapshotOf(OpenFile file) {
    const auto identity = Identity::of(file.status());
    auto text = file.readAll();
    return {std::move(file), identity, std::move(text)};
}

}

std::filesystem::path followedLinks(const std::filesystem::path& path) {
    if (path.empty()) throw FileError(FileError::Kind::system, path, ENOENT);
    std::error_code error;
    Path current = std::filesystem::absolute(path, error);
    if (error) throw FileError(FileError::Kind::system, path, error.value());
    for (int links = 0; const auto target = linkTarget(current); ++links) {
        if (links == mostLinks) throw FileError(FileError::Kind::system, path, ELOOP);
        current = current.parent_path() / *target; // an absolute target replaces all of it
    }
    const auto folder = std::filesystem::weakly_canonical(current.parent_path(), error);
    if (error) throw FileError(FileError::Kind::system, path, error.value());
    return folder / current.filename();
}

void makeFolders(const std::filesystem::path& folder) {
    if (folder.empty() || ::access(folder.c_str(), F_OK) == 0) return;
    makeFolders(folder.parent_path());
    if (::mkdir(folder.c_str(), 0700) == 0)
        return OpenFile(folder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW).joinItsFolder();
    if (errno != EEXIST) throwSystemError(folder);
}

std::optional<OpenFile> tryLock(const std::filesystem::path& path, int flags) {
    while (true) {
        OpenFile file(path, flags, 0600);
        if (!file.lock()) return {};
        if ((flags & O_CREAT) != 0) file.joinItsFolder();
        // Runtime folders are swept of old files: a lock on a file that is no longer at its name excludes nobody.
        struct stat now = {};
        const bool stillThere = ::stat(path.c_str(), &now) == 0;
        if (stillThere && Identity::of(now).sameFile(Identity::of(file.status()))) return file;
    }
}

OpenFile openToRead(const std::filesystem::path& path) { return OpenFile(path, readFlags); }

Snapshot Snapshot::of(const std::filesystem::path& path) { return snapshotOf(openToRead(path)); }

std::optional<Snapshot> Snapshot::ifThere(const std::filesystem::path& path) {
    auto file = OpenFile::ifThere(path, readFlags);
    if (!file) return {};
    return snapshotOf(std::move(*file));
}

}
