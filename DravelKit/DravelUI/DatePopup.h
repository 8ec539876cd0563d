#pragma once

#include <QDate>
#include <QList>
#include <QWidget>

namespace dravel {

class DayCell;
class TextLabel;

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
    void pick(QDate);
    void moveTo(QDate);
    void refresh();
    void focusCursor(Qt::FocusReason);

    QDate selected_, today_, cursor_;
    TextLabel* month_;
    QList<DayCell*> cells_;
};

}
