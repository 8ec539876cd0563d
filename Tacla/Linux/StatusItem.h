#pragma once

#include "DravelKit/Foundation/Signal.h"
#include "Tacla/Linux/MenuServer.h"

#include <QByteArray>
#include <QColor>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tacla {

// The types of org.kde.StatusNotifierItem.
struct StatusPixmap { // (iiay): ARGB32, big endian
    int width = 0, height = 0;
    QByteArray data;
};
using StatusPixmaps = QList<StatusPixmap>;
struct StatusToolTip { // (sa(iiay)ss)
    QString iconName;
    StatusPixmaps icon;
    QString title, text;
};

QDBusArgument& operator<<(QDBusArgument&, const StatusPixmap&);
const QDBusArgument& operator>>(const QDBusArgument&, StatusPixmap&);
QDBusArgument& operator<<(QDBusArgument&, const StatusToolTip&);
const QDBusArgument& operator>>(const QDBusArgument&, StatusToolTip&);

// What is known of the tray of a desktop by the name of the desktop ("ubuntu:GNOME"): hosts do not tell it themselves.
struct TrayHost {
    bool showsTitle = false;     // beside the icon, which then has no number
    bool drawsBoxes = true;      // before the menu's entries that can be checked
    bool coloursSymbols = false; // gives a symbolic icon the panel's own colour

    static TrayHost of(std::string_view currentDesktop);
};

// The program's icon in the tray of any desktop that hosts StatusNotifierItems: with whichever watcher appears.
class StatusItem final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ name CONSTANT)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(QString IconThemePath READ iconThemePath CONSTANT)
    Q_PROPERTY(tacla::StatusPixmaps IconPixmap READ pixmaps)
    Q_PROPERTY(QString AttentionIconName READ iconName)
    Q_PROPERTY(tacla::StatusPixmaps AttentionIconPixmap READ pixmaps)
    Q_PROPERTY(QString IconAccessibleDesc READ name CONSTANT)
    Q_PROPERTY(tacla::StatusToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)
    Q_PROPERTY(QString XAyatanaLabel READ label)
    Q_PROPERTY(QString XAyatanaLabelGuide READ label)

  public:
    StatusItem(QDBusConnection, TrayHost);
    ~StatusItem() override;

    // What stands in the tray: the number of open tasks in the icon, the two texts, and whether something is wrong.
    struct Content {
        std::size_t open = 0;
        std::string title, toolTip;
        QColor colour;
        bool needsAttention = false;
        bool operator==(const Content&) const = default;
    };
    void show(const Content&);

    dravel::Signal<bool> shown; // whether a host shows the icon: at the start, and when hosts come and go

    // With the token of the click: a plain one where the host does not open the menu, and one with the middle button.
    dravel::Signal<const std::string&> activated, middleClicked;

    // What the host handed over before the last click: for the window that the click opens.
    std::string takeActivationToken() { return std::exchange(activationToken_, {}); }

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString id() const { return QStringLiteral("fr.dravel.Tacla"); }
    QString name() const { return QStringLiteral("Tacla"); }
    QString status() const {
        return content_.needsAttention ? QStringLiteral("NeedsAttention") : QStringLiteral("Active");
    }
    int windowId() const { return 0; }
    QString iconName() const { return iconName_; }
    QString iconThemePath() const { return themePath_; }
    StatusPixmaps pixmaps() const; // also of the item that needs attention: hosts swap the icons
    StatusToolTip toolTip() const;
    bool itemIsMenu() const { return true; }
    QDBusObjectPath menu() const { return QDBusObjectPath(QLatin1String(MenuServer::path)); }
    QString label() const { return numbered_ ? QString() : QString::fromStdString(content_.title); }

    Q_INVOKABLE void Activate(int x, int y);
    Q_INVOKABLE void SecondaryActivate(int x, int y);
    Q_INVOKABLE void ContextMenu(int, int) {} // the host has the menu
    Q_INVOKABLE void Scroll(int, const QString&) {}
    Q_INVOKABLE void ProvideXdgActivationToken(const QString& token);

  Q_SIGNALS:
    void NewTitle();
    void NewIcon();
    void NewAttentionIcon();
    void NewToolTip();
    void NewStatus(const QString& status);
    void XAyatanaNewLabel(const QString& label, const QString& guide);

  private Q_SLOTS:
    void askIfShown();

  private:
    void registerWithWatcher();
    void announceCount();
    void nameSymbol();

    QDBusConnection connection_;
    TrayHost host_;
    Content content_;
    mutable std::optional<StatusPixmaps> pixmaps_; // drawn at the first question, then kept
    std::string activationToken_;
    QString iconName_, themePath_;
    bool numbered_ = false; // the symbol bears the number
};

}
