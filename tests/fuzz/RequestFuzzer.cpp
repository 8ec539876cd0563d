#include "DravelKit/GoogleAuth/LoopbackReceiver.h"

#include "DravelKit/Foundation/Text.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// Anybody on this machine can send the receiver anything.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto request = dravel::CallbackRequest::parse(bytes);
    dravel::CallbackRequest::isComplete(bytes);
    if (!request) return 0;
    if (bytes.find('\n') == bytes.npos) std::abort();
    for (const auto& [name, value] : request->query)
        if (!dravel::isValidUtf8(name) || !dravel::isValidUtf8(value)) std::abort();
    return 0;
}
