#pragma once

#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/Foundation/Instant.h"
#include "Tacla/MainWindow/Rows/RowContents.h"

#include <array>
#include <functional>
#include <optional>
#include <vector>

class QBoxLayout;

namespace dravel {
class Button;
class Chip;
class DateField;
class Offer;
class Switch;
class TextField;
class TextLabel;
class TimeField;
}

namespace tacla {

class AppModel;

// Where a new task is typed. Its day follows today until another one is picked. The words for a moment in its title are
// offered, and taken only when the user says so.
class AddTaskCard final : public dravel::Card {
    Q_OBJECT

  public:
    AddTaskCard(AppModel&, const dravel::Now&, QWidget* parent = nullptr);
    void setToday(Day);
    void focusTitle(); // ready to type
    void forgetDay();  // the day that was picked
    bool isEmpty() const { return draft_.title.empty(); }

  Q_SIGNALS:
    void added(bool more); // the task is in the file; more: the user wants to add another one

  protected:
    bool eventFilter(QObject*, QEvent*) override;
    void keyPressEvent(QKeyEvent*) override;
    void dragEnterEvent(QDragEnterEvent*) override;
    void dropEvent(QDropEvent*) override;
    bool focusNextPrevChild(bool forward) override;

  private:
    std::vector<QWidget*> stops() const; // in the order of the Tab key
    void nameFields();
    void arrange();
    QBoxLayout* fieldLine();
    QBoxLayout* choices();
    void followFields();
    void pick(Day);
    void offer();
    void take(const MomentWords&);
    void addAll(const std::vector<NewTask>&);
    std::function<void(const std::optional<std::string>& whyNot)> beginAdding(bool more); // what is told how it ended
    void finish(const std::optional<std::string>& whyNot, bool more = false);
    std::vector<NewTask> offeredTasks() const; // none, or several
    void startTime(const QString& typed);
    void add(bool more);
    void explain(const QString& why);
    void showDraft();
    Day currentDay() const { return Day::of(now_()); }

    AppModel& model_;
    const dravel::Now& now_;
    NewTaskDraft draft_;
    Day today_;
    bool isAdding_ = false;
    dravel::TextField* title_;
    dravel::Offer* offer_;
    dravel::TextLabel* reason_; // why the task is not in the file
    std::optional<MomentWords> told_;
    struct Pasted {
        std::string text; // in one line, as the field shows it
        std::vector<std::string> lines;
    };
    std::optional<Pasted> pasted_;
    std::array<dravel::Chip*, 3> chips_;
    dravel::DateField* date_;
    dravel::Switch *hasTime_, *strong_;
    dravel::TimeField* time_;
    dravel::Button* add_;
};

}
