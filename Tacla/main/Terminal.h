#pragma once

#include <cstdlib>
#include <string>
#include <string_view>

namespace tacla {

// What a command says: gathered here, and written by the program's entry in one go.
struct Terminal {
    std::string output, errors;

    void print(std::string_view line) { output.append(line) += '\n'; }

    // Every error message goes through here. Returns the exit status that goes with it.
    int fail(std::string_view message) {
        errors.append("tacla : ").append(message) += '\n';
        return EXIT_FAILURE;
    }
};

}
