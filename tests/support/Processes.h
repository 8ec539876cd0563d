#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

namespace tacla::testing {

inline constexpr int killedStatus = 128 + SIGKILL;

template <class Work>
pid_t start(Work work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work());
    return child;
}

// The exit status as the shell gives it.
inline int finished(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// Runs the work, which returns an exit status, in a process of its own.
template <class Work>
int inChild(Work work) {
    return finished(start(work));
}

// The tests run as root on build machines, whom no permission stops.
inline constexpr uid_t nobody = 65534;
inline void becomeNobody() {
    if (::geteuid() == 0 && (::setegid(nobody) != 0 || ::seteuid(nobody) != 0)) std::abort();
}
inline void giveToNobody(const std::filesystem::path& path) {
    if (::geteuid() == 0 && ::chown(path.c_str(), nobody, nobody) != 0) std::abort();
}

}
