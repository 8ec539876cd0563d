#pragma once

#include "DravelKit/DravelUI/Symbols.h"
#include "DravelKit/DravelUI/Theme.h"

#include <QTimer>
#include <QWidget>

namespace dravel {

// A symbol or a number in the middle of a filled circle. Decoration: it needs no name unless it says something alone.
class Disc final : public QWidget {
    Q_OBJECT

  public:
    struct Face {
        int diameter = 28;
        Theme::Tone fill = Theme::accentSoft;
        Symbol symbol = Symbol::checkLg;
        int symbolSize = 14;
        Theme::Tone ink = Theme::accentOnSoft;
        QString number = {};  // drawn instead of the symbol
        bool turning = false; // once per 1.2 s; stands still when animations are off
        bool operator==(const Face&) const = default;
    };

    explicit Disc(const Face&, QWidget* parent = nullptr);
    void setFace(const Face&);           // does nothing when nothing changed
    static Face done(int diameter = 28); // a check in the soft success fill

    QSize sizeHint() const override { return {face_.diameter, face_.diameter}; }

  protected:
    void paintEvent(QPaintEvent*) override;
    void showEvent(QShowEvent*) override { runClock(); }
    void hideEvent(QHideEvent*) override { timer_.stop(); }

  private:
    void runClock();

    Face face_;
    QTimer timer_;
    qreal angle_ = 0;
};

// A ring of 78 px that shows done of total, or a sun when there is nothing to do.
class ProgressRing final : public QWidget {
    Q_OBJECT

  public:
    explicit ProgressRing(QWidget* parent = nullptr);
    void setProgress(int done, int total, const QString& detail); // the detail is tooltip and accessible name
    int done() const { return done_; }
    int total() const { return total_; }
    QSize sizeHint() const override { return {78, 78}; }

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    int done_ = 0, total_ = 0;
};

}
