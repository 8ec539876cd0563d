#include "Tacla/main/Programs.h"

#include "DravelKit/Foundation/UserFolders.h"

#include <dlfcn.h>
#include <unistd.h>

namespace tacla {

std::filesystem::path moduleFolder() { return dravel::programFile().parent_path().parent_path() / "lib" / "tacla"; }

int runModule(const Module& module, const std::filesystem::path& folder, std::vector<std::string> arguments,
              Terminal& terminal) {
    const auto path = folder / module.file;
    if (::access(path.c_str(), F_OK) != 0) return terminal.fail(module.missing);
    // Never closed: its libraries keep threads and exit handlers.
    void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const entry = library == nullptr ? nullptr : ::dlsym(library, module.entry);
    if (entry == nullptr) return terminal.fail("impossible de charger " + path.string() + " : " + ::dlerror());

    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    return reinterpret_cast<int (*)(int, char**)>(entry)(static_cast<int>(arguments.size()), argv.data());
}

}
