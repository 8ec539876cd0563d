#include "DravelKit/Foundation/FileError.h"
#include "Tacla/main/CommandLine.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>

namespace {

using namespace tacla;

// Writes all of it, or answers why not.
int written(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count = ::write(descriptor, bytes.data(), bytes.size());
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno == EAGAIN) { // a terminal or pipe that another program made non-blocking
            pollfd ready{descriptor, POLLOUT, 0};
            ::poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

// Empties the terminal's buffers; false when the output could not be written.
bool flush(Terminal& terminal) {
    const int error = written(STDOUT_FILENO, terminal.output);
    if (error != 0)
        terminal.fail("impossible d'écrire sur la sortie : " +
                      dravel::FileError(dravel::FileError::Kind::system, "-", error).description());
    written(STDERR_FILENO, terminal.errors); // nobody is left to tell of a failure here
    terminal.output.clear();
    terminal.errors.clear();
    return error == 0;
}

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
    const auto module = [&](const Module& which, const std::vector<std::string>& all) {
        if (!flush(terminal)) return EXIT_FAILURE;
        return runModule(which, moduleFolder(), all, terminal);
    };
    return runCommandLine(arguments, terminal,
                          {variable("TACLA_FILE"), folders, preferences, dravel::systemNow(), module});
}

}

int main(int argc, char** argv) {
    // A file that reaches its size limit, a reader that went away: both are errors to report, not reasons to die.
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
    return flush(terminal) ? status : EXIT_FAILURE;
}
