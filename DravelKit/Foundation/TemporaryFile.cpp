#include "DravelKit/Foundation/TemporaryFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

namespace dravel {

namespace {

using Path = std::filesystem::path;

constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz012345";
constexpr std::size_t suffixLength = 6, longestName = 255;

Path freshName(const Path& target) {
    std::array<unsigned char, suffixLength> random{};
    if (::getentropy(random.data(), random.size()) != 0) throwSystemError(target);
    std::string suffix;
    for (const auto byte : random) suffix += letters[byte % letters.size()];
    return nameBeside(target, suffix);
}

bool isLeftover(const Path& path) {
    const auto file = OpenFile::ifThere(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    return file && S_ISREG(file->status().st_mode) && file->lock();
}

}

std::filesystem::path nameBeside(const Path& target, std::string_view ending) {
    const std::string mark = ".tacla-" + std::string(ending);
    return target.parent_path() / ("." + target.filename().string().substr(0, longestName - 1 - mark.size()) + mark);
}

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

TemporaryFile::Published TemporaryFile::publishAsNew(const Path& target) {
    if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
        mine_ = false;
        return Published::done;
    }
    if (errno == EINVAL || errno == ENOSYS) { // not every file system knows the flag; a link refuses as well
        if (::link(path_.c_str(), target.c_str()) == 0) return Published::done;
    }
    if (errno == EEXIST) return Published::occupied;
    throwSystemError(target);
}

void TemporaryFile::publishOver(const Path& target) {
    if (::rename(path_.c_str(), target.c_str()) != 0) throwSystemError(target);
    mine_ = false;
}

void removeLeftovers(const Path& target) {
    const std::string pattern = nameBeside(target, std::string(suffixLength, '?')).filename();
    const std::string_view start = std::string_view(pattern).substr(0, pattern.size() - suffixLength);
    std::error_code error;
    for (std::filesystem::directory_iterator entry(target.parent_path(), error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename();
        if (name.size() != pattern.size() || !name.starts_with(start)) continue;
        if (name.find_first_not_of(letters, start.size()) != name.npos) continue;
        try {
            if (isLeftover(entry->path())) ::unlink(entry->path().c_str());
        } catch (const FileError&) { // somebody else's, most likely
        }
    }
}

}
