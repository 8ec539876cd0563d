#pragma once

#include <cstdlib>
#include <string>
#include <string_view>

namespace tacla {

// What a program says: gathered here, and written in one go.
struct Terminal {
    std::string output, errors;

    void print(std::string_view line) { output.append(line) += '\n'; }

    // Every error message goes through here. Returns the exit status that goes with it.
    int fail(std::string_view message);

    // Writes and forgets what was said; false when the output could not be written, which is then said as an error.
    bool flush();
};

// Writes all of it; 0, or the errno that says why not.
int writeAll(int descriptor, std::string_view bytes);

}
