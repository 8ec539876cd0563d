#pragma once

#include "DravelKit/Foundation/SafeFile.h"
#include "tests/support/Processes.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tacla::testing {

namespace SafeFile = dravel::SafeFile;
using Path = std::filesystem::path;

inline const std::string mark = "- [ ] Lait\n";

// The edit of all these tests.
inline std::optional<std::string> marked(std::string_view text) { return mark + std::string(text); }

// A file in a folder of its own, and the locks elsewhere.
struct SafeFileWorld {
    TemporaryFolder folder;
    Path list = folder / "list", file = folder / "list/taches.md", locks = folder / "locks";

    explicit SafeFileWorld(std::string_view text = "- [ ] Pain\n") {
        std::filesystem::create_directories(list);
        writeBytes(file, text);
    }
    // "" when the edit was saved, else what went wrong as a user would read it.
    std::string failure(const SafeFile::Edit& edit = marked) const { return failureAt(file, edit); }
    std::string failureAt(const Path& path, const SafeFile::Edit& edit = marked) const {
        try {
            return SafeFile::edit(path, edit, locks) ? "" : "nothing to change";
        } catch (const dravel::FileError& error) {
            return error.description();
        }
    }
    // Whether that is what a user without the rights of root meets.
    bool nobodyMeets(std::string_view expected) const {
        return inChild([&] { return becomeNobody(), failure() == expected ? 0 : 1; }) == 0;
    }
    template <class Change>
    void forEachPath(Change change) const {
        for (const auto& path : {folder.path(), list, file}) change(path);
    }
    std::string text() const { return readBytes(file); }
    auto entries() const { return std::distance(std::filesystem::directory_iterator(list), {}); }
};

}
