#pragma once

#include "DravelKit/Foundation/Signal.h"

#include <QColor>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

namespace tacla {

// Whether the desktop prefers light or dark, as its settings portal tells, and tells again when it changes.
class ColourScheme final : public QObject {
    Q_OBJECT

  public:
    enum class Preference { unknown, dark, light };

    void watch(QDBusConnection session);

    Preference preference() const { return preference_; }
    dravel::Signal<> changed;

  private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void set(const QVariant& value);

    Preference preference_ = Preference::unknown;
};

// The tray icon's colour: readable on the panel of such a desktop, on either kind when it is not known.
QColor trayColour(ColourScheme::Preference);

}
