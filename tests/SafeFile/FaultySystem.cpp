#include "tests/SafeFile/FaultySystem.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <utility>

namespace tacla::testing {

namespace {

Fault* current = nullptr;

int struck(const char* name) { return current == nullptr ? 0 : current->strike(name); }

}

Fault::Fault(int call, Kind kind) : call_(call), error_(EIO), kind_(kind) { current = this; }
Fault::Fault(std::string name, std::function<void()> action, int error)
    : error_(error), name_(std::move(name)), action_(std::move(action)) {
    current = this;
}
Fault::~Fault() { current = nullptr; }

int Fault::strike(const std::string& name) {
    const int index = calls_++;
    if (name_ == name) {
        current = nullptr; // the action's own calls are not counted
        if (const auto action = std::exchange(action_, nullptr)) action();
        current = this;
        return error_ == EINTR ? std::exchange(error_, 0) : error_; // a signal comes once
    }
    if (kind_ == Kind::kill && index == call_) ::raise(SIGKILL);
    const bool fails = (kind_ == Kind::once && index == call_) || (kind_ == Kind::forGood && index >= call_);
    return fails ? error_ : 0;
}

}

// The real call, unless a fault strikes it.
template <class Result, class... Arguments>
static Result passed(const char* name, Arguments... arguments) {
    if (const int error = tacla::testing::struck(name)) return errno = error, -1;
    return reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, name))(arguments...);
}

#pragma GCC diagnostic ignored "-Wshadow" // flock is a function and a structure

// Declared here as the C library does, but for what its headers say about them to the compiler.
#define WRAPPED(exceptions, result, name, parameters, ...)                                                             \
    extern "C" result name parameters exceptions { return passed<result>(#name, __VA_ARGS__); }

WRAPPED(, ssize_t, pread, (int f, void* b, size_t n, off_t o), f, b, n, o)
WRAPPED(, ssize_t, pwrite, (int f, const void* b, size_t n, off_t o), f, b, n, o)
WRAPPED(, int, fsync, (int f), f)
WRAPPED(, int, getentropy, (void* b, size_t n), b, n)
WRAPPED(noexcept, int, ftruncate, (int f, off_t n), f, n)
WRAPPED(noexcept, int, fstat, (int f, struct stat* s), f, s)
WRAPPED(noexcept, int, flock, (int f, int o), f, o)
WRAPPED(noexcept, int, fchown, (int f, uid_t u, gid_t g), f, u, g)
WRAPPED(noexcept, int, fchmod, (int f, mode_t m), f, m)
WRAPPED(noexcept, ssize_t, flistxattr, (int f, char* b, size_t n), f, b, n)
WRAPPED(noexcept, ssize_t, fgetxattr, (int f, const char* k, void* b, size_t n), f, k, b, n)
WRAPPED(noexcept, int, fsetxattr, (int f, const char* k, const void* b, size_t n, int o), f, k, b, n, o)
WRAPPED(noexcept, int, fremovexattr, (int f, const char* k), f, k)
WRAPPED(noexcept, int, rename, (const char* a, const char* b), a, b)
WRAPPED(noexcept, int, renameat2, (int f, const char* a, int g, const char* b, unsigned o), f, a, g, b, o)
WRAPPED(noexcept, int, link, (const char* a, const char* b), a, b)
WRAPPED(noexcept, int, unlink, (const char* a), a)
WRAPPED(noexcept, int, mkdir, (const char* a, mode_t m), a, m)
WRAPPED(noexcept, int, faccessat, (int f, const char* a, int m, int o), f, a, m, o)
WRAPPED(noexcept, ssize_t, readlink, (const char* a, char* b, size_t n), a, b, n)

WRAPPED(noexcept, int, statx, (int f, const char* a, int o, unsigned m, struct statx* s), f, a, o, m, s)

extern "C" int fcntl(int descriptor, int command, ...) {
    __builtin_va_list arguments;
    __builtin_va_start(arguments, command);
    const auto argument = __builtin_va_arg(arguments, long); // a number or a pointer
    __builtin_va_end(arguments);
    return passed<int>("fcntl", descriptor, command, argument);
}

extern "C" int open(const char* path, int flags, ...) {
    __builtin_va_list arguments;
    __builtin_va_start(arguments, flags);
    const auto mode = (flags & O_CREAT) != 0 ? __builtin_va_arg(arguments, mode_t) : 0;
    __builtin_va_end(arguments);
    return passed<int>("open", path, flags, mode);
}
