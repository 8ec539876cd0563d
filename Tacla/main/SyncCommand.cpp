#include "Tacla/main/Commands.h"

namespace tacla {

int syncCalendar(Arguments, Terminal& terminal, const Environment& environment) {
    if (!environment.preferences.calendarSync())
        return terminal.fail("la recopie dans Google Agenda est désactivée (Réglages de Tacla)");
    return environment.run(networkModule, {"tacla", "sync"});
}

}
