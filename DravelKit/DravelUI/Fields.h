#pragma once

#include <QDateEdit>
#include <QLineEdit>
#include <QList>
#include <QPointer>
#include <QTimeEdit>

namespace dravel {

class TextLabel;

// A line of text to type: typed text in body medium, placeholder in body.
class TextField final : public QLineEdit {
    Q_OBJECT

  public:
    enum class Kind { Frameless, Boxed }; // boxed: 32 high on surface, accent border while focused

    TextField(Kind, const QString& placeholder, QWidget* parent = nullptr);
    QSize sizeHint() const override;

  Q_SIGNALS:
    void focusChanged(bool focused);

  protected:
    void focusInEvent(QFocusEvent*) override;
    void focusOutEvent(QFocusEvent*) override;

  private:
    Kind kind_;
};

// A month to pick a day from. Arrows move by day and week, Page Up and Page Down by month, Return picks, Escape closes.
class DatePopup final : public QWidget {
    Q_OBJECT

  public:
    DatePopup(QDate selected, QDate today, QWidget* parent = nullptr);
    void showUnder(const QWidget& field);
    QDate cursor() const { return cursor_; }

    // The Monday on which the six weeks shown for a month begin.
    static QDate firstDayShown(QDate month);

  Q_SIGNALS:
    void picked(QDate);

  protected:
    void paintEvent(QPaintEvent*) override;
    void keyPressEvent(QKeyEvent*) override;

  private:
    class DayCell;

    void pick(QDate);
    void moveTo(QDate);
    void refresh();
    void focusCursor(Qt::FocusReason);

    QDate selected_, today_, cursor_;
    TextLabel* month_;
    QList<DayCell*> cells_;
};

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
