#include "Tacla/main/ProgressLine.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace tacla {

namespace {

constexpr std::string_view clearLine = "\r\x1b[K";

}

ProgressLine::ProgressLine() : isTerminal_(::isatty(STDERR_FILENO) == 1) {}

ProgressLine::~ProgressLine() { show(""); }

void ProgressLine::show(std::string_view text) const {
    if (isTerminal_) std::fputs(std::string(clearLine).append(text).c_str(), stderr);
}

}
