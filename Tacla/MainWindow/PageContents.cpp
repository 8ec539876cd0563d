#include "Tacla/MainWindow/PageContents.h"

#include "DravelKit/DravelUI/Symbols.h"
#include "Tacla/TaskList/Labels.h"

#include <algorithm>
#include <iterator>

namespace tacla {

using dravel::Symbol;
using Source = dravel::OAuthClient::Source;

namespace {

constexpr std::size_t nextShown = 5;

std::string durationText(std::chrono::seconds time) {
    const auto minutes = time.count() / 60;
    return (minutes > 0 ? std::to_string(minutes) + " min " : "") + std::to_string(time.count() % 60) + " s";
}

std::string headline(std::size_t open, bool anyToday) {
    if (open >= 1) return counted(open, "tâche") + " à cocher";
    return anyToday ? "Tout est coché 🎉" : "Journée libre";
}

std::string detail(const TaskSelection& todays, std::size_t done, std::size_t late, Instant now) {
    auto text = counted(done, "faite");
    if (late > 0) text += " · " + std::to_string(late) + " en retard";
    for (std::size_t i = 0; i < todays.size(); ++i) {
        if (const auto brief = todays.brief(i); brief.done || brief.minutes == 0) continue;
        if (const auto task = todays[i]; *task.at() > now) return text + " · prochaine à " + task.time->description();
    }
    return text;
}

std::string unreadDatesText(std::size_t lines) {
    if (lines == 1) return "1 ligne finit par un retour chariot : sa date n'est pas lue";
    return std::to_string(lines) + " lignes finissent par un retour chariot : leur date n'est pas lue";
}

bool inTrouble(const ModelState& state) {
    return state.fileError || (state.calendarSync && (state.syncError || state.connection == Connection::signedOut));
}

std::string signedInText(const ModelState& state, const TimeText& timeText) {
    if (state.syncError) return "Synchro en échec";
    if (state.syncing) return "Synchro de l'agenda…";
    if (!state.lastSync) return "Agenda connecté";
    return "Agenda à jour · " + timeText(*state.lastSync);
}

std::string subtitle(const ModelState& state, const TimeText& timeText) {
    if (state.fileError) return "Liste illisible";
    if (!state.calendarSync) return state.file.filename().string();
    switch (state.connection) {
    case Connection::unknown: return "Agenda…";
    case Connection::signedOut: return "Agenda non connecté";
    case Connection::signingIn: return "Connexion à Google…";
    case Connection::signedIn: break;
    }
    return signedInText(state, timeText);
}

}

std::string_view rawValue(Section section) {
    switch (section) {
    case Section::today: return "today";
    case Section::late: return "late";
    case Section::upcoming: return "upcoming";
    case Section::done: return "done";
    case Section::settings: return "settings";
    }
    return {};
}

std::string_view title(Section section) {
    switch (section) {
    case Section::today: return "Aujourd'hui";
    case Section::late: return "En retard";
    case Section::upcoming: return "À venir";
    case Section::done: return "Faites";
    case Section::settings: return "Réglages";
    }
    return {};
}

Symbol symbol(Section section) {
    switch (section) {
    case Section::today: return Symbol::sun;
    case Section::late: return Symbol::exclamationCircle;
    case Section::upcoming: return Symbol::calendar3;
    case Section::done: return Symbol::checkCircle;
    case Section::settings: return Symbol::gear;
    }
    return Symbol::sun;
}

std::optional<Section> sectionNamed(std::string_view name) {
    for (const auto section : sections)
        if (rawValue(section) == name) return section;
    return std::nullopt;
}

Section sectionOf(const TaskItem& task, Day today) {
    if (task.done) return Section::done;
    return task.day && *task.day <= today ? Section::today : Section::upcoming;
}

std::string TaskGroup::title() const {
    if (!day) return heading;
    return heading.empty() ? capitalised(day->longLabel()) : heading + day->longLabel();
}

TodayContents todayContents(const ModelState& state) {
    TodayContents contents;
    auto late = state.late();
    auto todays = state.todays();
    auto next = state.upcoming(nextShown);
    contents.total = todays.size();
    for (std::size_t i = 0; i < todays.size(); ++i) contents.done += todays.brief(i).done ? 1 : 0;
    contents.overline = "Aujourd'hui · " + state.today.longLabel();
    contents.headline = headline(late.size() + contents.total - contents.done, contents.total > 0);
    contents.detail = detail(todays, contents.done, late.size(), state.now);

    if (!late.empty())
        contents.groups.push_back({.heading = "En retard",
                                   .day = {},
                                   .symbol = Symbol::exclamationTriangleFill,
                                   .role = ColourRole::danger,
                                   .tasks = std::move(late),
                                   .empty = {}});
    contents.groups.push_back({.heading = "Au programme",
                               .day = {},
                               .symbol = Symbol::sunFill,
                               .tasks = std::move(todays),
                               .empty = "Rien de prévu aujourd'hui.",
                               .showDay = false});
    if (!next.empty())
        contents.groups.push_back(
            {.heading = "Ensuite", .day = {}, .symbol = Symbol::calendar3, .tasks = std::move(next), .empty = {}});
    return contents;
}

TaskGroups lateGroups(const ModelState& state) {
    auto late = state.late();
    if (late.empty()) return {};
    return {{.heading = std::to_string(late.size()) + " en retard",
             .day = {},
             .symbol = Symbol::exclamationTriangleFill,
             .role = ColourRole::danger,
             .tasks = std::move(late),
             .empty = {},
             .postponable = true}};
}

TaskGroups foundGroups(const TaskList& tasks, const Places& found) {
    const auto firstDone = std::ranges::find_if(found, [&](Place place) { return tasks.brief(place).done; });
    TaskGroups groups;
    if (firstDone != found.begin())
        groups.push_back({.heading = "À cocher",
                          .day = {},
                          .symbol = Symbol::inbox,
                          .tasks = {tasks, Places(found.begin(), firstDone)},
                          .empty = {}});
    if (firstDone != found.end())
        groups.push_back({.heading = "Faites",
                          .day = {},
                          .symbol = Symbol::checkCircleFill,
                          .role = ColourRole::faint,
                          .tasks = {tasks, Places(firstDone, found.end())},
                          .empty = {}});
    return groups;
}

std::array<PostponedTo, 3> postponements(Day today) {
    return {{{"À &aujourd'hui", today}, {"À &demain", today.plusDays(1)}, {"À &lundi", today.nextMonday()}}};
}

TaskGroups upcomingGroups(const ModelState& state) {
    const auto tomorrow = state.today.plusDays(1);
    TaskGroups groups;
    for (auto& [packed, places] : upcomingByDay(state.tasks, state.today)) {
        const auto day = unpackedDay(packed);
        groups.push_back({.heading = day == tomorrow ? "Demain · " : "",
                          .day = day,
                          .symbol = Symbol::calendar3,
                          .tasks = {state.tasks, std::move(places)},
                          .empty = {}});
    }
    if (auto places = undated(state.tasks); !places.empty())
        groups.push_back({.heading = "Sans date",
                          .day = {},
                          .symbol = Symbol::inbox,
                          .role = ColourRole::plain,
                          .tasks = {state.tasks, std::move(places)},
                          .empty = {}});
    return groups;
}

TaskGroups doneGroups(const ModelState& state) {
    const auto yesterday = state.today.plusDays(-1);
    TaskGroups groups;
    for (auto& [packed, places] : doneByDay(state.tasks, state.today)) {
        const auto day = unpackedDay(packed);
        TaskGroup group{.heading = day == yesterday ? "Hier · " : "",
                        .day = day,
                        .symbol = Symbol::checkCircleFill,
                        .role = ColourRole::faint,
                        .tasks = {state.tasks, std::move(places)},
                        .empty = {}};
        if (day == state.today) {
            group.heading = "Aujourd'hui";
            group.day.reset();
            group.role = ColourRole::success;
        }
        groups.push_back(std::move(group));
    }
    return groups;
}

std::vector<Problem> problems(const ModelState& state) {
    std::vector<Problem> found;
    if (state.fileError) found.push_back({*state.fileError, ColourRole::danger});
    if (state.unreadDates > 0) found.push_back({unreadDatesText(state.unreadDates), ColourRole::warning, true});
    if (state.calendarSync && state.syncError) found.push_back({"Agenda : " + *state.syncError, ColourRole::warning});
    return found;
}

ListContents listContents(Section section, const ModelState& state) {
    switch (section) {
    case Section::late:
        return {.subtitle = "Cochez-les, ou reportez-les avec « … » : demain, lundi ou dans une semaine.",
                .groups = lateGroups(state),
                .emptySymbol = Symbol::handThumbsUpFill,
                .empty = "Aucun retard. 👌",
                .problems = problems(state)};
    case Section::upcoming:
        return {.subtitle = "Jour par jour, dans l'ordre où elles sonneront.",
                .groups = upcomingGroups(state),
                .emptySymbol = Symbol::calendar3,
                .empty = "Rien de prévu pour la suite."};
    case Section::done:
        return {.subtitle = state.calendarSync
                                ? "Elles restent dans la liste et dans l'agenda, avec un ✅."
                                : "Elles restent dans la liste, avec la date du jour où elles ont été faites.",
                .groups = doneGroups(state),
                .emptySymbol = Symbol::checkCircle,
                .empty = "Rien de coché pour l'instant."};
    case Section::today:
    case Section::settings: break;
    }
    return {};
}

SyncBadgeContent syncBadge(const ModelState& state, const TimeText& timeText) {
    const auto open = state.openCount();
    const bool trouble = inTrouble(state);
    return {.symbol = state.syncing ? Symbol::arrowRepeat
                      : trouble     ? Symbol::exclamationLg
                                    : Symbol::checkLg,
            .title = open >= 1 ? std::to_string(open) + " à faire" : "Tout est coché",
            .subtitle = subtitle(state, timeText),
            .syncing = state.syncing,
            .trouble = trouble};
}

std::string syncText(const ModelState& state, const TimeText& timeText) {
    if (state.syncError) return *state.syncError;
    if (state.syncing) return "En cours";
    if (state.lastSync) return "Dernière : " + timeText(*state.lastSync) + ", puis à chaque modification de la liste";
    return "Pas encore faite";
}

std::string copyText(Instant made, Day today) {
    const auto day = Day::of(made);
    return (day == today ? "Aujourd'hui" : capitalised(day.longLabel())) + " à " + Clock::of(made).description();
}

std::string quickEntryText(const ModelState& state) {
    const auto& key = state.quickEntryKey;
    if (key && !key->empty()) return "Ajouter une tâche depuis tout programme : " + *key;
    return (key ? "Pour ajouter une tâche depuis tout programme, choisissez une touche, ou associez-la vous-même à "
                  "cette "
                  "commande dans les réglages du clavier de votre bureau :\n"
                : "Pour ajouter une tâche depuis tout programme, associez une touche à cette commande dans les "
                  "réglages "
                  "du clavier de votre bureau :\n") +
           std::string(quickEntryCommand);
}

std::string trayText(const ModelState& state) {
    if (!state.withoutTray) return "";
    return "Ce bureau n'a pas de zone de notification : fenêtre fermée, les rappels continuent. Tacla se rouvre depuis "
           "le "
           "lanceur ou la vue d'ensemble ; sur GNOME, l'extension AppIndicator apporte son icône.";
}

std::string calendarSyncText(bool on) {
    return on ? "Dans un agenda à part, sans rappel sur le téléphone."
              : "Désactivé. Les événements déjà recopiés restent dans l'agenda.";
}

std::string accountText(const ModelState& state) {
    if (state.connection == Connection::signedIn) return "Connecté à votre compte Google.";
    if (state.signIn)
        return (state.signIn->noBrowser
                    ? "Aucun navigateur ne s'est ouvert. Copiez l'adresse et ouvrez-la dans un navigateur : encore "
                    : "Répondez à Google dans votre navigateur : encore ") +
               durationText(state.signIn->left) + ".";
    if (state.connection == Connection::signingIn) return "Tacla s'assure que votre trousseau de clés répond.";
    if (state.googleClient == Source::missing)
        return "Il faut d'abord un fichier client, gratuit : le mode d'emploi montre comment l'obtenir.";
    return "";
}

std::string clientText(Source source) {
    switch (source) {
    case Source::missing: return "Absent. Choisissez le fichier que Google vous a donné.";
    case Source::unreadable: return "Illisible (attendu : client OAuth « Application de bureau »).";
    case Source::own: return "En place.";
    case Source::package: break;
    }
    return "";
}

}
