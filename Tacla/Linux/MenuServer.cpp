#include "Tacla/Linux/MenuServer.h"

#include "dbusmenuadaptor.h"

#include <QDBusMetaType>

#include <algorithm>
#include <utility>

namespace tacla {

using namespace Qt::StringLiterals;

namespace {

void registerTypes() {
    // Under the very names that the adaptor's slots use, or QtDBus drops these slots.
    qRegisterMetaType<MenuNode>("tacla::MenuNode");
    qRegisterMetaType<QList<MenuNodeProperties>>("QList<tacla::MenuNodeProperties>");
    qRegisterMetaType<QList<MenuEvent>>("QList<tacla::MenuEvent>");
    qDBusRegisterMetaType<MenuNode>();
    qDBusRegisterMetaType<MenuNodeProperties>();
    qDBusRegisterMetaType<QList<MenuNodeProperties>>();
    qDBusRegisterMetaType<MenuEvent>();
    qDBusRegisterMetaType<QList<MenuEvent>>();
    qDBusRegisterMetaType<QList<int>>();
    qDBusRegisterMetaType<QList<QStringList>>();
}

// "_" announces an access key; doubled it is itself. "&" means nothing here.
QString label(const std::string& text) { return QString::fromStdString(text).replace(u'_', "__"_L1); }

QVariantMap properties(const MenuEntry& entry, bool hostDrawsBoxes) {
    if (entry.kind == MenuEntry::Kind::separator) return {{u"type"_s, u"separator"_s}};
    const std::string box = entry.checked == false && !hostDrawsBoxes ? "☐ " : "";
    QVariantMap map{{u"label"_s, label(box + entry.label)}};
    if (!entry.enabled || entry.kind == MenuEntry::Kind::header) map[u"enabled"_s] = false;
    if (entry.kind == MenuEntry::Kind::submenu) map[u"children-display"_s] = u"submenu"_s;
    if (entry.checked) {
        map[u"toggle-type"_s] = u"checkmark"_s;
        map[u"toggle-state"_s] = *entry.checked ? 1 : 0;
    }
    if (entry.shortcut) {
        const QStringList keys{u"Control"_s, QString(QLatin1Char(*entry.shortcut))};
        map[u"shortcut"_s] = QVariant::fromValue(QList<QStringList>{keys});
    }
    return map;
}

QVariantMap chosenProperties(const QVariantMap& all, const QStringList& names) {
    if (names.isEmpty()) return all;
    QVariantMap some;
    for (const auto& name : names)
        if (all.contains(name)) some[name] = all[name];
    return some;
}

MenuNode cut(const MenuNode& node, int depth, const QStringList& names) {
    MenuNode copy{node.id, chosenProperties(node.properties, names), {}};
    if (depth == 0) return copy;
    for (const auto& child : node.children) copy.children.append(cut(child, depth - 1, names));
    return copy;
}

const MenuNode* findIn(const MenuNode& node, int id) {
    if (node.id == id) return &node;
    for (const auto& child : node.children)
        if (const auto* found = findIn(child, id)) return found;
    return nullptr;
}

}

MenuServer::MenuServer(std::function<Menu()> content, bool hostDrawsBoxes)
    : content_(std::move(content)), hostDrawsBoxes_(hostDrawsBoxes) {
    registerTypes();
    root_.properties[u"children-display"_s] = u"submenu"_s;
    new DbusmenuAdaptor(this);
}

bool MenuServer::registerOn(QDBusConnection connection) {
    refresh(); // a host that reads an empty menu never opens it
    return connection.registerObject(QLatin1String(path), this);
}

bool MenuServer::refresh() {
    auto menu = content_();
    if (revision_ > 0 && menu == shown_) return false;
    root_.children.clear();
    commandsBefore_ = std::exchange(commands_, {});
    number(menu, root_);
    shown_ = std::move(menu);
    Q_EMIT LayoutUpdated(++revision_, 0);
    return true;
}

void MenuServer::number(const Menu& menu, MenuNode& parent) {
    for (const auto& entry : menu) {
        MenuNode node{++lastId_, properties(entry, hostDrawsBoxes_), {}};
        commands_[node.id] = entry.command;
        number(entry.children, node);
        parent.children.append(std::move(node));
    }
}

const MenuNode* MenuServer::find(int id) const { return findIn(root_, id); }

uint MenuServer::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames, MenuNode& layout) {
    if (const auto* node = find(parentId)) layout = cut(*node, recursionDepth, propertyNames);
    return revision_;
}

QList<MenuNodeProperties> MenuServer::GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames) {
    QList<MenuNodeProperties> all;
    const auto add = [&](const MenuNode& node) {
        all.append({node.id, chosenProperties(node.properties, propertyNames)});
    };
    const std::function<void(const MenuNode&)> addTree = [&](const MenuNode& node) {
        add(node);
        std::for_each(node.children.begin(), node.children.end(), addTree);
    };
    if (ids.isEmpty()) addTree(root_); // none named: every one is meant
    for (const int id : ids)
        if (const auto* node = find(id)) add(*node);
    return all;
}

QDBusVariant MenuServer::GetProperty(int id, const QString& name) {
    const auto* node = find(id);
    // An invalid variant cannot be sent.
    return QDBusVariant(node && node->properties.contains(name) ? node->properties[name] : QVariant(QString()));
}

void MenuServer::Event(int id, const QString& eventId, const QDBusVariant&, uint) {
    if (eventId == "clicked"_L1) click(id);
}

QList<int> MenuServer::EventGroup(const QList<MenuEvent>& events) {
    QList<int> unknown;
    for (const auto& event : events) {
        if (!find(event.id) && !commandOf(event.id))
            unknown.append(event.id);
        else if (event.name == "clicked"_L1)
            click(event.id);
    }
    return unknown;
}

bool MenuServer::AboutToShow(int id) { return id == 0 && refresh(); }

QList<int> MenuServer::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
    QList<int> updated;
    for (const int id : ids) {
        if (AboutToShow(id)) updated.append(id);
        if (!find(id)) idErrors.append(id);
    }
    return updated;
}

const MenuCommand* MenuServer::commandOf(int id) const {
    for (const auto* commands : {&commands_, &commandsBefore_})
        if (const auto found = commands->find(id); found != commands->end()) return &found->second;
    return nullptr;
}

void MenuServer::click(int id) {
    // The host waits for the answer; what was chosen may take longer, or end the program.
    const auto* command = commandOf(id);
    if (!command) return;
    const auto choose = [this, command = *command] { chosen(command); };
    QMetaObject::invokeMethod(this, choose, Qt::QueuedConnection);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuNode& node) {
    argument.beginStructure();
    argument << node.id << node.properties;
    argument.beginArray(qMetaTypeId<QDBusVariant>());
    for (const auto& child : node.children) argument << QDBusVariant(QVariant::fromValue(child));
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuNode& node) {
    argument.beginStructure();
    argument >> node.id >> node.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        node.children.append(qdbus_cast<MenuNode>(child.variant()));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuNodeProperties& node) {
    argument.beginStructure();
    argument << node.id << node.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuNodeProperties& node) {
    argument.beginStructure();
    argument >> node.id >> node.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event) {
    argument.beginStructure();
    argument << event.id << event.name << event.data << event.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event) {
    argument.beginStructure();
    argument >> event.id >> event.name >> event.data >> event.timestamp;
    argument.endStructure();
    return argument;
}

}
