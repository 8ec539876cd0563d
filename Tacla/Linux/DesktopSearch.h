#pragma once

#include "DravelKit/Foundation/Signal.h"
#include "Tacla/StatusMenu/StatusMenu.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <string>
#include <vector>

namespace tacla {

// The types of org.kde.krunner1.
struct RunnerAction { // (sss)
    QString id, text, icon;
};
struct RunnerMatch { // (sssida{sv})
    QString id, text, icon;
    int kind = 0;
    double relevance = 0;
    QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument&, const RunnerAction&);
const QDBusArgument& operator>>(const QDBusArgument&, RunnerAction&);
QDBusArgument& operator<<(QDBusArgument&, const RunnerMatch&);
const QDBusArgument& operator>>(const QDBusArgument&, RunnerMatch&);

// Finds tasks for the desktop's own search: GNOME's overview (org.gnome.Shell.SearchProvider2) and KRunner
// (org.kde.krunner1).
class DesktopSearch final : public QObject {
    Q_OBJECT

  public:
    DesktopSearch();

    using Find = std::function<std::vector<SearchEntry>(const std::string& typed)>;
    void findWith(Find find) { find_ = std::move(find); }

    dravel::Signal<const std::string&> chosen; // the task's key; "" when the search goes on in the window

    static constexpr auto path = "/fr/dravel/Tacla/search";
    // Before the program has its name: who waits for that asks at once, and once only. Questions wait for the loop.
    bool registerOn(QDBusConnection);

    // The methods of the interfaces, called by the adaptors.
    Q_INVOKABLE QStringList GetInitialResultSet(const QStringList& terms);
    Q_INVOKABLE QStringList GetSubsearchResultSet(const QStringList& previous, const QStringList& terms);
    Q_INVOKABLE QList<QVariantMap> GetResultMetas(const QStringList& identifiers);
    Q_INVOKABLE void ActivateResult(const QString& identifier, const QStringList& terms, uint timestamp);
    Q_INVOKABLE void LaunchSearch(const QStringList& terms, uint timestamp);
    Q_INVOKABLE QList<tacla::RunnerAction> Actions() { return {}; }
    Q_INVOKABLE QList<tacla::RunnerMatch> Match(const QString& query);
    Q_INVOKABLE void Run(const QString& matchId, const QString& actionId);

  private:
    void choose(const QString& identifier);

    Find find_ = [](const auto&) { return std::vector<SearchEntry>(); };
    std::vector<SearchEntry> found_; // by the last question
};

}
