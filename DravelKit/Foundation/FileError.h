#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

namespace dravel {

// Why a file could not be read or written.
class FileError : public std::runtime_error {
  public:
    enum class Kind {
        system,     // the system refused; code is an errno value
        notUtf8,    // the bytes are not valid UTF-8
        notRegular, // a pipe, a socket, a device
        changed,    // somebody else kept saving the file while we tried to
        open,       // somebody else has the file open to write into it
        busy,       // another process held the lock for too long
    };

    FileError(Kind kind, std::filesystem::path path, int code = 0);

    // In French and without the path: "Permission non accordée".
    std::string description() const;

    const Kind kind;
    const std::filesystem::path path;
    const int code;
};

}
