#pragma once

#include <cstdlib>
#include <filesystem>
#include <span>
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

// The arguments after a program's name, or after a command's.
using Arguments = std::span<const std::string>;

// A program in <prefix>/libexec/tacla that `tacla` starts: the terminal itself stays free of windows and network.
struct Program {
    const char* file;
    const char* missing; // what to say when it is not installed
};

inline constexpr Program syncProgram{"tacla-sync", "la recopie dans Google Agenda n'est pas installée (paquet tacla)"};
inline constexpr Program desktopProgram{"tacla-desktop",
                                        "l'application de bureau n'est pas installée (paquet tacla-desktop)"};

// After a rename: the keys, one JSON object from old to new ones, stand on the standard input of the sync program,
// which is silent when all went well.
inline constexpr const char* renamedKeysOption = "--renamed-keys";

// The folder over bin/tacla and libexec/tacla, as each of the programs sees it.
std::filesystem::path installationPrefix();

// Goes on as that program, under the name of `tacla`. Returns, with the exit status, only when there is no way to.
int becomeProgram(const Program&, const std::filesystem::path& prefix, Arguments, Terminal&);

// Runs it to its end with that standard input, and returns its exit status.
int runProgram(const Program&, const std::filesystem::path& prefix, Arguments, std::string_view input, Terminal&);

}
