#pragma once

#include "Tacla/main/Terminal.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tacla {

// A part of the program that is loaded only when a command needs it: the terminal stays free of windows and network.
struct Module {
    const char* file;
    const char* entry;   // int entry(int argc, char** argv): prints, fails and answers the exit status itself
    const char* missing; // what to say when it is not installed
};

inline constexpr Module networkModule{"tacla_net.so", "tacla_net_main",
                                      "la recopie dans Google Agenda n'est pas installée (paquet tacla)"};
inline constexpr Module desktopModule{"tacla_desktop.so", "tacla_desktop_main",
                                      "l'application de bureau n'est pas installée (paquet tacla-desktop)"};

// <prefix>/lib/tacla for the program <prefix>/bin/tacla.
std::filesystem::path moduleFolder();

int runModule(const Module&, const std::filesystem::path& folder, std::vector<std::string> arguments, Terminal&);

}
