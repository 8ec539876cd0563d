#include "Tacla/main/Application.h"

#include <string_view>

// The module's only door. The executable has checked the arguments.
extern "C" __attribute__((visibility("default"))) int tacla_desktop_main(int argc, char** argv) {
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "--notify-test") return tacla::runNotifyTest(argc, argv);
    if (command == "--snapshot") return tacla::runSnapshot(argc, argv);
    return tacla::runApplication(argc, argv);
}
