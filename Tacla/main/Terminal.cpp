#include "Tacla/main/Terminal.h"

#include "DravelKit/Foundation/FileError.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace tacla {

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

}
