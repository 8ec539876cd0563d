#pragma once

#include "DravelKit/Foundation/Signal.h"
#include "Tacla/StatusMenu/StatusMenu.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <map>

namespace tacla {

// The types of com.canonical.dbusmenu.
struct MenuNode { // (ia{sv}av)
    int id = 0;
    QVariantMap properties;
    QList<MenuNode> children;
};
struct MenuNodeProperties { // (ia{sv})
    int id = 0;
    QVariantMap properties;
};
struct MenuEvent { // (isvu)
    int id = 0;
    QString name;
    QDBusVariant data;
    uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument&, const MenuNode&);
const QDBusArgument& operator>>(const QDBusArgument&, MenuNode&);
QDBusArgument& operator<<(QDBusArgument&, const MenuNodeProperties&);
const QDBusArgument& operator>>(const QDBusArgument&, MenuNodeProperties&);
QDBusArgument& operator<<(QDBusArgument&, const MenuEvent&);
const QDBusArgument& operator>>(const QDBusArgument&, MenuEvent&);

// Serves a menu on the bus: asks for its content when a host is about to show it, or when told that it may have
// changed, and announces a new layout only when the content differs. Identifiers are never used twice, so that a click
// on an entry of the layout before, which a host may still show, does what that entry said. Older ones are ignored.
class MenuServer final : public QObject {
    Q_OBJECT
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

  public:
    // Where the host draws no boxes, open tasks begin with one.
    explicit MenuServer(std::function<Menu()> content, bool hostDrawsBoxes = true);

    dravel::Signal<const MenuCommand&> chosen;

    static constexpr auto path = "/fr/dravel/Tacla/menu";
    bool registerOn(QDBusConnection);

    bool refresh(); // true when the layout is a new one

    uint version() const { return 3; }
    QString textDirection() const { return QStringLiteral("ltr"); }
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

    // The methods of the interface, called by the adaptor.
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames, tacla::MenuNode& layout);
    Q_INVOKABLE QList<tacla::MenuNodeProperties> GetGroupProperties(const QList<int>& ids,
                                                                    const QStringList& propertyNames);
    Q_INVOKABLE QDBusVariant GetProperty(int id, const QString& name);
    Q_INVOKABLE void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    Q_INVOKABLE QList<int> EventGroup(const QList<tacla::MenuEvent>& events);
    Q_INVOKABLE bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

  Q_SIGNALS:
    void LayoutUpdated(uint revision, int parent);

  private:
    void number(const Menu&, MenuNode& parent);
    const MenuNode* find(int id) const;
    const MenuCommand* commandOf(int id) const;
    void click(int id);

    std::function<Menu()> content_;
    bool hostDrawsBoxes_;
    Menu shown_;
    MenuNode root_;
    std::map<int, MenuCommand> commands_, commandsBefore_;
    int lastId_ = 0;
    uint revision_ = 0;
};

}
