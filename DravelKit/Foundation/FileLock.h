#pragma once

#include "DravelKit/Foundation/OpenFile.h"

namespace dravel {

// The one lock under which all processes of this program change a file. Advisory, and gone with its holder however that
// one ends. Its file stands in the lock folder under a name made of the target's path, and stays there.
class FileLock {
  public:
    // Waits at most two seconds, then throws FileError (busy).
    FileLock(const std::filesystem::path& target, const std::filesystem::path& lockFolder);

  private:
    OpenFile file_;
};

}
