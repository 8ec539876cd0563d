#pragma once

#include <stdexcept>
#include <string>

namespace dravel {

// Why an HTTP exchange gave no answer at all. An answer with any status is not an error here.
class HttpError : public std::runtime_error {
  public:
    enum class Kind {
        badRequest,  // the address or a header cannot be sent
        unknownHost, // no such name, or no network
        unreachable, // nobody listens there
        timedOut,    // silent for too long, or the whole exchange took too long
        lost,        // the connection broke, or the answer is cut or no HTTP
        insecure,    // TLS failed
        tooLarge,    // the answer is longer than allowed
        cancelled,   // the stop token asked
        failed,      // anything else
    };

    HttpError(Kind kind, std::string host);

    // In French, for the user; also what().
    std::string description() const { return what(); }

    const Kind kind;
    const std::string host;
};

}
