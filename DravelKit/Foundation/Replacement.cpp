#include "DravelKit/Foundation/Replacement.h"

#include "DravelKit/Foundation/FileAttributes.h"
#include "DravelKit/Foundation/InPlaceWrite.h"
#include "DravelKit/Foundation/TemporaryFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace dravel {

namespace {

using Path = std::filesystem::path;

bool swap(const Path& a, const Path& b) {
    return ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0;
}

bool isAt(const Path& path, const OpenFile& file) {
    struct stat there {};
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

// True when what the exchange brought out is still what was read: an editor may have saved after the last look at it.
bool broughtOut(const TemporaryFile& temporary, const Snapshot& before) {
    const auto old = Snapshot::of(temporary.path());
    return old.identity.sameFile(before.identity) && old.text == before.text;
}

enum class Exchange { done, changed, impossible };

Exchange exchange(TemporaryFile& temporary, const Path& target, const Snapshot& before, const OpenFile& folder) {
    if (!swap(temporary.path(), target)) {
        switch (errno) {
        case ENOENT: return Exchange::changed;
        case EBUSY:
        case EXDEV: return Exchange::impossible; // the file itself is a mount
        case EINVAL:
        case ENOSYS: // a file system that can only replace
            temporary.publishOver(target);
            folder.sync();
            return Exchange::done;
        default: throwSystemError(target);
        }
    }
    try {
        if (!broughtOut(temporary, before)) {
            giveBack(temporary, target);
            return Exchange::changed;
        }
        folder.sync();
    } catch (const FileError&) {
        giveBack(temporary, target);
        throw;
    }
    return Exchange::done;
}

}

bool makeFile(const Path& target, std::string_view text, mode_t mode) {
    const OpenFile folder(target.parent_path(), O_RDONLY | O_DIRECTORY);
    TemporaryFile temporary(target, mode);
    temporary.file().overwrite(text);
    if (temporary.publishAsNew(target) == TemporaryFile::Published::occupied) return false;
    folder.sync();
    return true;
}

bool replaceFile(const Path& target, const std::optional<Snapshot>& before, std::string_view after) {
    if (!before) return makeFile(target, after, 0600);
    const OpenFile folder(target.parent_path(), O_RDONLY | O_DIRECTORY); // first: without it nothing could be synced
    if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) throwSystemError(target);
    if (before->identity.links > 1) return writeInPlace(target, *before, after);

    TemporaryFile temporary(target, 0600);
    if (!copyAttributes(before->file, temporary.file())) return writeInPlace(target, *before, after);
    temporary.file().overwrite(after);
    if (Snapshot::ifThere(target) != before) return false;
    switch (exchange(temporary, target, *before, folder)) {
    case Exchange::done: return true;
    case Exchange::changed: return false;
    case Exchange::impossible: break;
    }
    return writeInPlace(target, *before, after);
}

}
