#include "Tacla/main/CommandLine.h"

#include "Tacla/main/Commands.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

namespace tacla {

namespace {

int syncCalendar(Arguments, Terminal& terminal, const Environment& environment) {
    if (!environment.preferences.calendarSync())
        return terminal.fail("la recopie dans Google Agenda est désactivée (Réglages de Tacla)");
    return environment.become(syncProgram, {});
}

struct Command {
    std::string_view name;
    std::size_t least, most;                              // arguments behind the name
    int (*run)(Arguments, Terminal&, const Environment&); // none: the desktop program's, which gets all arguments
};

constexpr std::size_t any = std::numeric_limits<std::size_t>::max();

constexpr std::array commands{
    Command{"list", 0, any, listTasks},        Command{"done", 1, any, checkTask},
    Command{"rename", 2, 2, renameTask},       Command{"sync", 0, any, syncCalendar},
    Command{"--notify-test", 0, any, nullptr}, Command{"--snapshot", 1, any, nullptr},
};

constexpr auto usage = "usage : tacla [list | done <texte> | rename <texte> <nouveau titre> | sync]";

}

int runCommandLine(Arguments arguments, Terminal& terminal, const Environment& environment) {
    if (arguments.empty()) return environment.become(desktopProgram, arguments);
    const auto command = std::ranges::find(commands, std::string_view(arguments.front()), &Command::name);
    const auto count = arguments.size() - 1;
    if (command == commands.end() || count < command->least || count > command->most) return terminal.fail(usage);
    if (command->run == nullptr) return environment.become(desktopProgram, arguments);
    return command->run(arguments.subspan(1), terminal, environment);
}

}
