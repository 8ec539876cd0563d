#include "Tacla/Linux/DesktopSearch.h"

#include "searchadaptor.h"

#include <QDBusMetaType>

#include <algorithm>
#include <utility>

namespace tacla {

using namespace Qt::StringLiterals;

namespace {

QString text(const std::string& words) { return QString::fromStdString(words); }

}

DesktopSearch::DesktopSearch() {
    qRegisterMetaType<QList<QVariantMap>>("QList<QVariantMap>");
    qRegisterMetaType<QList<RunnerAction>>("QList<tacla::RunnerAction>");
    qRegisterMetaType<QList<RunnerMatch>>("QList<tacla::RunnerMatch>");
    qDBusRegisterMetaType<QList<QVariantMap>>();
    qDBusRegisterMetaType<RunnerAction>();
    qDBusRegisterMetaType<QList<RunnerAction>>();
    qDBusRegisterMetaType<RunnerMatch>();
    qDBusRegisterMetaType<QList<RunnerMatch>>();
    new SearchProvider2Adaptor(this);
    new Krunner1Adaptor(this);
}

bool DesktopSearch::registerOn(QDBusConnection connection) {
    return connection.registerObject(QLatin1String(path), this);
}

QStringList DesktopSearch::GetInitialResultSet(const QStringList& terms) {
    found_ = find_(terms.join(u' ').toStdString());
    QStringList identifiers;
    for (const auto& entry : found_) identifiers << text(entry.key);
    return identifiers;
}

QStringList DesktopSearch::GetSubsearchResultSet(const QStringList&, const QStringList& terms) {
    return GetInitialResultSet(terms);
}

QList<QVariantMap> DesktopSearch::GetResultMetas(const QStringList& identifiers) {
    QList<QVariantMap> metas;
    for (const auto& identifier : identifiers) {
        const auto entry = std::ranges::find(found_, identifier.toStdString(), &SearchEntry::key);
        if (entry == found_.end()) continue;
        metas.append(QVariantMap{{u"id"_s, identifier},
                                 {u"name"_s, text(entry->title)},
                                 {u"description"_s, text(entry->when)},
                                 {u"gicon"_s, u"fr.dravel.Tacla"_s}});
    }
    return metas;
}

QList<RunnerMatch> DesktopSearch::Match(const QString& query) {
    constexpr int possibleMatch = 30; // of KRunner's kinds
    QList<RunnerMatch> matches;
    for (const auto& entry : find_(query.toStdString()))
        matches.append({text(entry.key),
                        text(entry.title),
                        u"fr.dravel.Tacla"_s,
                        possibleMatch,
                        0.8,
                        {{u"subtext"_s, text(entry.when)}}});
    return matches;
}

void DesktopSearch::ActivateResult(const QString& identifier, const QStringList&, uint) { choose(identifier); }

void DesktopSearch::LaunchSearch(const QStringList&, uint) { choose({}); }

void DesktopSearch::Run(const QString& matchId, const QString&) { choose(matchId); }

// The caller waits for the answer, not for the window.
void DesktopSearch::choose(const QString& identifier) {
    const auto open = [this, key = identifier.toStdString()] { chosen(key); };
    QMetaObject::invokeMethod(this, open, Qt::QueuedConnection);
}

QDBusArgument& operator<<(QDBusArgument& argument, const RunnerAction& action) {
    argument.beginStructure();
    argument << action.id << action.text << action.icon;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, RunnerAction& action) {
    argument.beginStructure();
    argument >> action.id >> action.text >> action.icon;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const RunnerMatch& match) {
    argument.beginStructure();
    argument << match.id << match.text << match.icon << match.kind << match.relevance << match.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, RunnerMatch& match) {
    argument.beginStructure();
    argument >> match.id >> match.text >> match.icon >> match.kind >> match.relevance >> match.properties;
    argument.endStructure();
    return argument;
}

}
