#pragma once

#include <QWidget>

namespace dravel {

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
