#pragma once

#include <QDialog>

#include <vector>

namespace dravel {

// A sheet of the keys that a program knows. Escape closes it.
class KeysPanel final : public QDialog {
    Q_OBJECT

  public:
    struct Entry {
        QString keys, meaning;
    };
    KeysPanel(const std::vector<Entry>&, QWidget* parent);
};

}
