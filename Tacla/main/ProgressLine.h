#pragma once

#include <cstddef>
#include <string_view>

namespace tacla {

// One line on the terminal behind standard error that shows how far the work is, and is gone with this object. Nothing
// at all when standard error is no terminal.
class ProgressLine {
  public:
    ProgressLine();
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(std::string_view text) const;

  private:
    const bool isTerminal_;
};

}
