#pragma once

#include "DravelKit/DravelUI/Symbols.h"

#include <QWidget>

#include <vector>

namespace dravel {

class SidebarRow;

// A list of places. One stop of the Tab key; Up, Down, Home and End move and select.
class SidebarList final : public QWidget {
    Q_OBJECT

  public:
    explicit SidebarList(const QString& accessibleName, QWidget* parent = nullptr);
    int addRow(Symbol, const QString& title, const QString& objectName); // its index; the first one is selected
    int current() const { return current_; }
    void setCurrent(int); // says currentChanged when it differs
    int count() const { return static_cast<int>(rows_.size()); }
    QSize sizeHint() const override;

  Q_SIGNALS:
    void currentChanged(int);

  protected:
    void keyPressEvent(QKeyEvent*) override;
    void resizeEvent(QResizeEvent*) override;

  private:
    std::vector<SidebarRow*> rows_;
    int current_ = -1;
};

}
