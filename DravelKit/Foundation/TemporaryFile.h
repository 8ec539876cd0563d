#pragma once

#include "DravelKit/Foundation/OpenFile.h"

namespace dravel {

// A new version of a file, written beside it as ".taches.md.tacla-XXXXXX" and gone with this object unless it was given
// its final name. While its maker lives, it holds a lock: that tells it from the leftovers of a killed one.
class TemporaryFile {
  public:
    TemporaryFile(const std::filesystem::path& target, mode_t mode);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::filesystem::path& path() const { return path_; }
    const OpenFile& file() const { return file_; }

    enum class Published { done, occupied };
    Published publishAsNew(const std::filesystem::path& target); // unless something of that name exists
    void publishOver(const std::filesystem::path& target);       // in place of what is there
    void keep() { mine_ = false; }                               // leaves what is at this path

  private:
    std::filesystem::path path_;
    OpenFile file_;
    bool mine_ = true;
};

// The hidden name beside the target that ends so: ".taches.md.tacla-" and the ending.
std::filesystem::path nameBeside(const std::filesystem::path& target, std::string_view ending);

// Removes what killed processes left beside the target. Best effort: a leftover harms nobody.
void removeLeftovers(const std::filesystem::path& target);

}
