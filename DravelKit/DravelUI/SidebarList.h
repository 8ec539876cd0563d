#pragma once

#include "DravelKit/DravelUI/Control.h"
#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/Symbols.h"

#include <QWidget>

#include <vector>

namespace dravel {

class TextLabel;

// A row of a SidebarList: checked means selected.
class SidebarRow final : public Control {
    Q_OBJECT

  public:
    SidebarRow(Symbol, const QString& title, QWidget* parent);

  protected:
    void paint(QPainter&) override;
    void nextCheckState() override { setChecked(true); }
    void showRing(bool) override;
    void keyPressEvent(QKeyEvent*) override;
    void resizeEvent(QResizeEvent*) override;

  private:
    bool isFolded() const; // to its symbol

    Symbol symbol_;
    bool ringed_ = false;
};

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
    void clicked(int); // also on the current row

  protected:
    void keyPressEvent(QKeyEvent*) override;
    void resizeEvent(QResizeEvent*) override;

  private:
    std::vector<SidebarRow*> rows_;
    int current_ = -1;
};

// The status block at the foot of a sidebar, 56 high. Passive.
class SidebarBadge final : public QWidget {
    Q_OBJECT

  public:
    struct Content {
        Symbol symbol = Symbol::checkLg;
        QString title, subtitle;
        bool trouble = false; // warning tones
        bool busy = false;    // the symbol turns
        bool operator==(const Content&) const = default;
    };

    explicit SidebarBadge(QWidget* parent = nullptr);
    void setContent(const Content&);
    QSize sizeHint() const override { return {186, 56}; }

  protected:
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;

  private:
    Disc* disc_;
    TextLabel *title_, *subtitle_;
};

}
