#include "DravelKit/Foundation/SafeFile.h"

#include "DravelKit/Foundation/Replacement.h"
#include "DravelKit/Foundation/FileLock.h"
#include "DravelKit/Foundation/FilePaths.h"
#include "DravelKit/Foundation/InPlaceWrite.h"
#include "DravelKit/Foundation/TemporaryFile.h"
#include "DravelKit/Foundation/Text.h"

#include <sys/stat.h>

namespace dravel::SafeFile {

namespace {

constexpr int mostAttempts = 1 + 3; // an editor may save in between three times

void requireUtf8(const Path& path, std::string_view text) {
    if (!isValidUtf8(text)) throw FileError(FileError::Kind::notUtf8, path);
}

enum class Missing { isAnError, isEmpty };

std::optional<Change> editLocked(const Path& path, const Edit& edit, const Path& lockFolder, Missing missing) {
    const Path target = followedLinks(path);
    const FileLock lock(target, lockFolder);
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

}
