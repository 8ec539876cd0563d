#include "Tacla/main/Programs.h"

#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/Foundation/UserFolders.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace tacla {

namespace {

using std::filesystem::path;

path fileOf(const Program& program, const path& prefix) { return prefix / "libexec" / "tacla" / program.file; }

int failToStart(const Program& program, const path& prefix, int error, Terminal& terminal) {
    if (error == ENOENT) return terminal.fail(program.missing);
    const dravel::FileError reason(dravel::FileError::Kind::system, fileOf(program, prefix), error);
    return terminal.fail("impossible de charger " + reason.path.string() + " : " + reason.description());
}

// The arguments as exec wants them. Windows are known by the program's name, which is that of what the user starts.
class Argv {
  public:
    explicit Argv(Arguments arguments) : words_{"tacla"} {
        words_.insert(words_.end(), arguments.begin(), arguments.end());
        for (auto& word : words_) pointers_.push_back(word.data());
        pointers_.push_back(nullptr);
    }
    char* const* get() const { return pointers_.data(); }

  private:
    std::vector<std::string> words_;
    std::vector<char*> pointers_;
};

// Starts the program, which reads from `input`. Returns 0, or the errno that says why not.
int spawn(const path& file, const Argv& argv, int input, pid_t& child) {
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    const int error = ::posix_spawn(&child, file.c_str(), &actions, nullptr, argv.get(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return error;
}

}

int Terminal::fail(std::string_view message) {
    errors.append("tacla : ").append(message) += '\n';
    return EXIT_FAILURE;
}

bool Terminal::flush() {
    const int error = writeAll(STDOUT_FILENO, output);
    if (error != 0)
        fail("impossible d'écrire sur la sortie : " +
             dravel::FileError(dravel::FileError::Kind::system, "-", error).description());
    writeAll(STDERR_FILENO, errors); // nobody is left to tell of a failure here
    output.clear();
    errors.clear();
    return error == 0;
}

int writeAll(int descriptor, std::string_view bytes) {
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

path installationPrefix() {
    const auto folder = dravel::programFile().parent_path();
    const auto above = folder.parent_path();
    return above.filename() == "libexec" ? above.parent_path() : above;
}

int becomeProgram(const Program& program, const path& prefix, Arguments arguments, Terminal& terminal) {
    ::execv(fileOf(program, prefix).c_str(), Argv(arguments).get());
    return failToStart(program, prefix, errno, terminal);
}

int runProgram(const Program& program, const path& prefix, Arguments arguments, std::string_view input,
               Terminal& terminal) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return failToStart(program, prefix, errno, terminal);
    const auto [reading, writing] = ends;
    pid_t child = 0;
    const int error = spawn(fileOf(program, prefix), Argv(arguments), reading, child);
    ::close(reading);
    if (error == 0) writeAll(writing, input); // one that ends before it has read all says why itself
    ::close(writing);
    if (error != 0) return failToStart(program, prefix, error, terminal);

    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
    return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}

}
