#include "DravelKit/Foundation/InPlaceWrite.h"

#include "DravelKit/Foundation/TemporaryFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

namespace dravel {

namespace {

using Path = std::filesystem::path;

struct Copies {
    Path before, after;

    explicit Copies(const Path& target)
        : before(nameBeside(target, "old-text")), after(nameBeside(target, "new-text")) {}
    void remove() const {
        ::unlink(after.c_str());
        ::unlink(before.c_str());
    }
};

void save(const Path& target, const Path& copy, std::string_view text) {
    TemporaryFile temporary(target, 0600);
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

}

bool writeInPlace(const Path& target, const Snapshot& before, std::string_view after) {
    const OpenFile file(target, O_WRONLY | O_NONBLOCK);
    const OpenFile folder(target.parent_path(), O_RDONLY | O_DIRECTORY);
    const Copies copies(target);
    try {
        save(target, copies.after, after);
        save(target, copies.before, before.text);
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

void finishInterruptedWrite(const Path& target) {
    const Copies copies(target);
    const auto before = Snapshot::ifThere(copies.before), after = Snapshot::ifThere(copies.after);
    if (!before && !after) return;
    if (before && after) {
        const auto now = Snapshot::ifThere(target);
        const bool whole = !now || now->text == before->text || now->text == after->text;
        if (!whole && isMixture(now->text, before->text, after->text))
            OpenFile(target, O_WRONLY).overwrite(before->text);
    }
    copies.remove();
}

}
