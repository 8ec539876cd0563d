#pragma once

#include <QLabel>

class QPainter;

namespace dravel {

// The maker's wordmark, drawn from path data in the text colour. Its accessible name is "Dravel".
class DravelLogo final : public QLabel {
    Q_OBJECT

  public:
    explicit DravelLogo(int height = 24, QWidget* parent = nullptr);
    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent*) override;
};

}
