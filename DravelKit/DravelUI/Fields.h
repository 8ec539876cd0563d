#pragma once

#include <QDateEdit>
#include <QPointer>
#include <QTimeEdit>

namespace dravel {

class DatePopup;

// dd/MM/yyyy with a calendar symbol. Up and Down change the section; Alt+Down or a click on the symbol opens the popup.
class DateField final : public QDateEdit {
    Q_OBJECT

  public:
    explicit DateField(const QString& accessibleName, QWidget* parent = nullptr);
    ~DateField() override;
    void setToday(QDate today) { today_ = today; } // the day that the popup marks; without it the system's
    void openPopup();
    DatePopup* popup() const; // null while it is closed
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent*) override;
    void keyPressEvent(QKeyEvent*) override;
    void mousePressEvent(QMouseEvent*) override;

  private:
    QDate today_;
    QPointer<DatePopup> popup_;
};

// HH:mm with a clock symbol.
class TimeField final : public QTimeEdit {
    Q_OBJECT

  public:
    explicit TimeField(const QString& accessibleName, QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent*) override;
};

}
