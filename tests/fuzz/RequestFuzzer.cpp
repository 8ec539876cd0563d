#include "DravelKit/GoogleAuth/LoopbackReceiver.h"
#include "tests/fuzz/Fuzzer.h"

// Anybody on this machine can send the receiver anything.
void fuzz(std::string_view bytes) {
    const auto request = dravel::CallbackRequest::parse(bytes);
    dravel::CallbackRequest::isComplete(bytes);
    if (!request) return;
    require(bytes.find('\n') != bytes.npos);
    for (const auto& [name, value] : request->query) require(dravel::isValidUtf8(name) && dravel::isValidUtf8(value));
}
