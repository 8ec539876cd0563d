#include "DravelKit/GoogleAuth/SecretServiceKeyring.h"
#include "Tacla/CalendarSync/CalendarSync.h"
#include "Tacla/CalendarSync/TaclaGoogle.h"
#include "Tacla/TaskDocument/TaskDocument.h"
#include "Tacla/main/Environment.h"
#include "Tacla/main/ProgressLine.h"

#include <cerrno>
#include <cstdio>
#include <span>

namespace {

using namespace tacla;
using Keys = std::map<std::string, std::string>;

CalendarSync::Result mirror(const Tasks& tasks, const Keys& renamed, const dravel::UserFolders& folders,
                            Preferences& preferences) {
    const auto endpoints = dravel::GoogleEndpoints::fromEnvironment(googleBaseVariable);
    const auto prefix = moduleFolder().parent_path().parent_path();
    dravel::GoogleAuth auth(taclaGoogle(preferences),
                            {.folders = {.data = folders.data, .resources = prefix / "share" / "tacla"},
                             .endpoints = endpoints,
                             .keyring = std::make_shared<dravel::SecretServiceKeyring>(),
                             .openBrowser = {}});
    CalendarSync sync(auth, preferences, endpoints.calendar);
    const ProgressLine line;
    line.show("Lecture de Google Agenda…");
    return sync.run(tasks, renamed, {}, [&](std::size_t sent, std::size_t planned) {
        line.show("Envoi à Google Agenda : " + std::to_string(sent) + " sur " + std::to_string(planned));
    });
}

int sync(const Keys& renamed, bool silent, Terminal& terminal) {
    const auto folders = dravel::UserFolders::fromEnvironment();
    Preferences preferences(preferencesFile(folders), folders.locks,
                            [&](const std::string& message) { terminal.fail(message); });
    const char* const chosen = std::getenv("TACLA_FILE");
    const auto file = resolvedFile(chosen == nullptr ? "" : chosen, preferences, folders);
    const auto tasks = TaskDocument(file, folders).readIfPossible();
    if (!tasks) return terminal.fail(unreadable(file));
    const auto [created, updated, deleted] = mirror(*tasks, renamed, folders, preferences);
    if (!silent) {
        terminal.print("+" + std::to_string(created) + " ~" + std::to_string(updated) + " -" + std::to_string(deleted));
    }
    return EXIT_SUCCESS;
}

// "sync", or "sync-renamed" and pairs of an old and a new key.
int run(std::span<char*> arguments, Terminal& terminal) {
    Keys renamed;
    for (std::size_t i = 2; i + 1 < arguments.size(); i += 2) renamed[arguments[i]] = arguments[i + 1];
    try {
        return sync(renamed, arguments[1] == std::string_view("sync-renamed"), terminal);
    } catch (const dravel::FileError& error) {
        return terminal.fail(impossibleToWrite(error));
    } catch (const std::exception& error) { // AuthError, SyncError, HttpError: what() is in French
        return terminal.fail(error.what());
    }
}

}

// The module's only door. The executable has checked the arguments.
extern "C" __attribute__((visibility("default"))) int tacla_net_main(int argc, char** argv) {
    Terminal terminal;
    int status = run({argv, static_cast<std::size_t>(argc)}, terminal);
    if (std::fputs(terminal.output.c_str(), stdout) < 0 || std::fflush(stdout) != 0) {
        const dravel::FileError error(dravel::FileError::Kind::system, "-", errno);
        status = terminal.fail("impossible d'écrire sur la sortie : " + error.description());
    }
    std::fputs(terminal.errors.c_str(), stderr);
    return status;
}
