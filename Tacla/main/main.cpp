#include "Tacla/main/CommandLine.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <vector>

namespace {

using namespace tacla;

// A file opened in place of a closed stream would get what is written to that stream. Reading ends serve as well: a
// write to them fails, as it should.
void occupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(stream, F_GETFD) < 0) ::open("/dev/null", O_RDONLY);
}

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

int run(Arguments arguments, Terminal& terminal) {
    const auto folders = dravel::UserFolders::fromEnvironment();
    Preferences preferences(preferencesFile(folders), folders.locks,
                            [&](const std::string& message) { terminal.fail(message); });
    const auto become = [&](const Program& program, Arguments all) {
        return terminal.flush() ? becomeProgram(program, installationPrefix(), all, terminal) : EXIT_FAILURE;
    };
    const auto runWith = [&](const Program& program, Arguments all, std::string_view input) {
        return terminal.flush() ? runProgram(program, installationPrefix(), all, input, terminal) : EXIT_FAILURE;
    };
    return runCommandLine(arguments, terminal,
                          {variable("TACLA_FILE"), folders, preferences, dravel::systemNow(), become, runWith});
}

}

int main(int argc, char** argv) {
    // A file that reaches its size limit, a reader that went away: both are errors to report, not reasons to die. The
    // programs that are started from here inherit that, and the standard streams.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    occupyStandardStreams();
    Terminal terminal;
    int status = EXIT_FAILURE;
    try {
        const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
        status = run(arguments, terminal);
    } catch (const std::exception& error) {
        terminal.fail(error.what());
    }
    return terminal.flush() ? status : EXIT_FAILURE;
}
