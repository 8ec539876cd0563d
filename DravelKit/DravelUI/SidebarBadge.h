#pragma once

#include "DravelKit/DravelUI/Disc.h"

namespace dravel {

class TextLabel;

// The status block at the foot of a sidebar, 56 high. Passive.
class SidebarBadge final : public QWidget {
    Q_OBJECT

  public:
    struct Content {
        Symbol symbol = Symbol::CheckLg;
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
