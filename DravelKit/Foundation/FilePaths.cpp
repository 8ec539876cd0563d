#include "DravelKit/Foundation/FilePaths.h"

#include "DravelKit/Foundation/OpenFile.h"

#include <unistd.h>

#include <cerrno>
#include <climits>

namespace dravel {

namespace {

using Path = std::filesystem::path;

constexpr int mostLinks = 40; // the system's own limit

std::optional<Path> linkTarget(const Path& path) {
    std::string target(PATH_MAX, '\0');
    const auto length = ::readlink(path.c_str(), target.data(), target.size());
    if (length < 0 && (errno == EINVAL || errno == ENOENT)) return {};
    if (length < 0) throwSystemError(path);
    target.resize(static_cast<std::size_t>(length));
    return Path(target);
}

}

std::filesystem::path followedLinks(const std::filesystem::path& path) {
    if (path.empty()) throw FileError(FileError::Kind::system, path, ENOENT);
    Path current = std::filesystem::absolute(path);
    for (int links = 0; const auto target = linkTarget(current); ++links) {
        if (links == mostLinks) throw FileError(FileError::Kind::system, path, ELOOP);
        current = current.parent_path() / *target; // an absolute target replaces all of it
    }
    std::error_code error;
    const auto folder = std::filesystem::weakly_canonical(current.parent_path(), error);
    if (error) throw FileError(FileError::Kind::system, path, error.value());
    return folder / current.filename();
}

void makeFolders(const std::filesystem::path& folder) {
    if (folder.empty() || ::access(folder.c_str(), F_OK) == 0) return;
    makeFolders(folder.parent_path());
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) throwSystemError(folder);
}

}
