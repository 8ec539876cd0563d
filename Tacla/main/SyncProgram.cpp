#include "DravelKit/Foundation/FileError.h"
#include "DravelKit/GoogleAuth/SecretServiceKeyring.h"
#include "Tacla/CalendarSync/CalendarSync.h"
#include "Tacla/CalendarSync/TaclaGoogle.h"
#include "Tacla/TaskDocument/TaskDocument.h"
#include "Tacla/main/Programs.h"

#include <nlohmann/json.hpp>
#include <unistd.h>

#include <cstdio>
#include <iostream>

namespace {

using namespace tacla;
using Keys = std::map<std::string, std::string>;

// One line on the terminal behind standard error that shows how far the work is, and is gone with this object. Nothing
// at all when standard error is no terminal.
class ProgressLine {
  public:
    ProgressLine() = default;
    ~ProgressLine() { show(""); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(std::string_view text) const {
        constexpr std::string_view clearLine = "\r\x1b[K";
        if (isTerminal_) std::fputs(std::string(clearLine).append(text).c_str(), stderr);
    }

  private:
    const bool isTerminal_ = ::isatty(STDERR_FILENO) == 1;
};

// The list as it is once it is our turn.
Tasks currentTasks(const Preferences& preferences, const dravel::UserFolders& folders) {
    const char* const chosen = std::getenv("TACLA_FILE");
    const auto file = resolvedFile(chosen == nullptr ? "" : chosen, preferences, folders);
    auto tasks = TaskDocument(file, folders).readIfPossible();
    if (!tasks) throw std::runtime_error(unreadable(file));
    return std::move(*tasks);
}

void sayThatItWaits() {
    Terminal terminal;
    terminal.fail("une autre recopie est en cours, celle-ci attend son tour");
    terminal.flush();
}

CalendarSync::Result sync(const Keys& renamed, Terminal& terminal) {
    const auto folders = dravel::UserFolders::fromEnvironment();
    Preferences preferences(preferencesFile(folders), folders.locks,
                            [&](const std::string& message) { terminal.fail(message); });
    const auto endpoints = dravel::GoogleEndpoints::fromEnvironment(googleBaseVariable);
    dravel::GoogleAuth auth(taclaGoogle(preferences),
                            {.folders = {.data = folders.data, .resources = installationPrefix() / "share" / "tacla"},
                             .endpoints = endpoints,
                             .keyring = std::make_shared<dravel::SecretServiceKeyring>()});
    CalendarSync calendar(auth, preferences, endpoints.calendar, folders.locks);
    const auto turn = calendar.takeTurn({}, sayThatItWaits);
    const auto tasks = currentTasks(preferences, folders);
    const ProgressLine line;
    line.show("Lecture de Google Agenda…");
    return calendar.run(turn, tasks, renamed, {}, [&](std::size_t sent, std::size_t planned) {
        line.show("Envoi à Google Agenda : " + std::to_string(sent) + " sur " + std::to_string(planned));
    });
}

int failed(const std::exception& error, Terminal& terminal) { // AuthError, SyncError, HttpError: what() is in French
    const int status = terminal.fail(error.what());
    if (const auto hint = hintOf(error); !hint.empty()) terminal.fail(hint);
    return status;
}

int run(bool afterRename, Terminal& terminal) {
    try {
        const auto renamed = afterRename ? nlohmann::json::parse(std::cin).get<Keys>() : Keys();
        const auto result = sync(renamed, terminal);
        if (afterRename) return EXIT_SUCCESS;
        terminal.print("+" + std::to_string(result.created) + " ~" + std::to_string(result.updated) + " -" +
                       std::to_string(result.deleted));
        if (const auto hint = result.hint(); !hint.empty()) terminal.fail(hint);
        return EXIT_SUCCESS;
    } catch (const nlohmann::json::exception&) {
        return terminal.fail("clés renommées illisibles");
    } catch (const dravel::FileError& error) {
        return terminal.fail(impossibleToWrite(error));
    } catch (const std::exception& error) {
        return failed(error, terminal);
    }
}

}

// Started by `tacla` only, which has checked that the calendar is to be mirrored.
int main(int argc, char** argv) {
    Terminal terminal;
    const int status = run(argc > 1 && argv[1] == std::string_view(renamedKeysOption), terminal);
    return terminal.flush() ? status : EXIT_FAILURE;
}
