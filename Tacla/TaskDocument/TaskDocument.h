#pragma once

#include "DravelKit/Foundation/SafeFile.h"
#include "DravelKit/Foundation/UserFolders.h"
#include "Tacla/TaskList/TaskViews.h"

#include <filesystem>
#include <optional>
#include <string>

namespace tacla {

// The task file in use, and when it was modified last as far as we know.
class TaskFileBinding {
  public:
    using Stamp = std::optional<dravel::SafeFile::Modified>; // none: no such file

    TaskFileBinding(std::filesystem::path file, dravel::UserFolders);

    const std::filesystem::path& path() const { return path_; }
    void bind(std::filesystem::path file) { path_ = std::move(file); }

    Stamp onDisk() const { return dravel::SafeFile::modified(path_); } // one stat
    const Stamp& known() const { return known_; }                      // as of the last successful read
    bool isStale(const Stamp& onDisk) const { return unreadable_ || onDisk != known_; }

    // All throw dravel::FileError.
    Tasks read();
    std::optional<dravel::SafeFile::Change> edit(const dravel::SafeFile::Edit&, Instant now) const;
    void create() const; // with the new-file text, unless it exists

    void pruneCopies(Instant now) const; // of the list as it was before each change

  private:
    std::filesystem::path path_;
    dravel::UserFolders folders_;
    Stamp known_;
    bool unreadable_ = false; // the last read failed: the file may come back just as it was
};

}
