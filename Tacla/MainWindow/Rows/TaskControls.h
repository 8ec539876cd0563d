#pragma once

#include "DravelKit/DravelUI/Control.h"
#include "DravelKit/Foundation/Instant.h"
#include "Tacla/MainWindow/Rows/RowContents.h"

#include <QWidget>

#include <optional>
#include <vector>

// What a task is checked and edited with.
namespace dravel {
class Button;
class DateField;
class Offer;
class Switch;
class TextField;
class TextLabel;
class TimeField;
}

namespace tacla {

// The circle before a task. A click says clicked(); whether the task is done is the task file's to say.
class CheckButton final : public dravel::Control {
    Q_OBJECT

  public:
    explicit CheckButton(QWidget* parent = nullptr);

    void setTask(const QString& title, bool done, bool strong);
    void setRowHighlighted(bool);
    QSize sizeHint() const override { return {32, 32}; }

  protected:
    void paint(QPainter&) override;
    QRect face() const override { return {6, 6, 20, 20}; }
    int faceRadius() const override { return 10; }
    void nextCheckState() override {}

  private:
    struct Look;
    Look look() const;

    bool strong_ = false, rowHighlighted_ = false;
};

// The inline editor of a row: title, day and time. It holds a draft only; the row saves it.
class TaskEditor final : public QWidget {
    Q_OBJECT

  public:
    static constexpr int titleHeight = 32;

    TaskEditor(const TaskDraft&, const dravel::Now&, QWidget* parent);

    TaskChange change(Day today) const { return changeOf(draft_, opened_, today); }
    bool isTouched() const { return draft_ != opened_; }
    void say(const QString&); // why nothing was saved; nothing: no more
    int neededHeight(int width) const;
    void setToday(Day);
    std::vector<QWidget*> stops() const; // in the order of the Tab key

  Q_SIGNALS:
    void saved(Qt::FocusReason);
    void cancelled(Qt::FocusReason);
    void heightChanged();

  protected:
    void keyPressEvent(QKeyEvent*) override;

  private:
    void fill();
    void arrange();
    void followFields();
    int fieldsHeight() const;
    void offer();
    void take(const MomentWords&);

    TaskDraft draft_, opened_;
    const dravel::Now& now_;
    dravel::TextField* title_;
    dravel::Offer* offer_;
    std::optional<MomentWords> told_;
    dravel::DateField* date_;
    dravel::Switch* hasTime_;
    dravel::TimeField* time_;
    dravel::Button *cancel_, *save_;
    dravel::TextLabel* note_;
};

}
