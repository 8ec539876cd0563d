#pragma once

#include "Tacla/MainWindow/Rows/RowContents.h"

#include <QWidget>

#include <vector>

namespace dravel {
class Button;
class DateField;
class Switch;
class TextField;
class TimeField;
}

namespace tacla {

// The inline editor of a row: title, day and time. It holds a draft only; the row saves it.
class TaskEditor final : public QWidget {
    Q_OBJECT

  public:
    static constexpr int titleHeight = 32, editorHeight = 68;

    TaskEditor(const TaskDraft&, Day today, QWidget* parent);

    const TaskDraft& draft() const { return draft_; }
    void setToday(Day);
    std::vector<QWidget*> stops() const; // in the order of the Tab key

  Q_SIGNALS:
    void saved(Qt::FocusReason);
    void cancelled(Qt::FocusReason);

  protected:
    void keyPressEvent(QKeyEvent*) override;

  private:
    void fill();
    void arrange();
    void followFields();

    TaskDraft draft_;
    dravel::TextField* title_;
    dravel::DateField* date_;
    dravel::Switch* hasTime_;
    dravel::TimeField* time_;
    dravel::Button *cancel_, *save_;
};

}
