#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "Tacla/MainWindow/Pages/ColumnPlan.h"
#include "Tacla/MainWindow/Rows/TaskRow.h"

#include <QPointF>
#include <QWidget>

#include <cstdint>
#include <map>

namespace dravel {
class DravelPage;
}

namespace tacla {

class TaskListCard;

// The cards of tasks of a page. Only the rows in view are widgets, whatever the length of the lists. A new state
// updates the rows in place: focus, scroll position and an edit in progress stay.
//
// The widget itself only keeps the room in the page's column; cards and rows stand beside it on the page's stage, which
// paints their shadows. It also is the Tab stop that leads into the rows from above, and `end_` the one from below.
class TaskColumn final : public QWidget, private TaskRow::Container {
    Q_OBJECT

  Q_SIGNALS:
    void draftsGivenUp(); // the groups shall be told anew: they hold a row without a task

  public:
    TaskColumn(dravel::DravelPage&, AppModel&, const dravel::Now&);

    void setGroups(TaskGroups, Day today);
    void setSought(const SoughtWords&);     // marked in the titles
    void postponeAll();                     // opens the menu of the first group that can be postponed
    void focusTask(const std::string& key); // scrolls it into view; nothing when it is not here

  protected:
    void moveEvent(QMoveEvent*) override { fill(); }
    void resizeEvent(QResizeEvent*) override;
    void focusInEvent(QFocusEvent*) override;
    bool eventFilter(QObject*, QEvent*) override;

  private:
    using Rows = std::map<std::size_t, TaskRow*>;
    struct Focus {
        std::size_t row;
        TaskRow::Stop stop;
        Qt::FocusReason reason;
    };
    struct Anchor {
        std::size_t row;
        int top;
    };

    void step(const TaskRow&, int by, TaskRow::Stop) override;
    bool tab(const TaskRow&, bool forward) override;
    void heightChanged() override;
    void highlightChanged() override { separate(); }
    bool isRepeated(const QMouseEvent& press) override;

    std::optional<Focus> focused() const;
    std::vector<Anchor> anchorsInView() const;
    void keepInView(const Anchor&);
    bool keepDrafts(TaskGroups&) const;
    Rows carryOver(const TaskGroups& before, const std::vector<Anchor>&);

    // In the order in which they follow each other: heights of all rows, widgets for those in view, what these really
    // measure, and where they stand.
    void estimate();
    void fill();
    bool measure();
    void place();
    void separate();

    std::size_t rowCount() const { return layout_.rowCount(); }
    void focusRow(std::size_t row, TaskRow::Stop, Qt::FocusReason); // scrolls it into view
    void keepEndBehind(const TaskRow&);
    void leave(bool forward);
    std::size_t indexOf(const TaskRow&) const;
    TaskRow& builtRow(std::size_t);
    TaskListCard& builtCard(std::size_t);
    void showTask(std::size_t row);
    void dropOutside(ColumnLayout::Range);
    void dropUnusedCards(ColumnLayout::Range);

    dravel::DravelPage& page_;
    AppModel& model_;
    const dravel::Now& now_;
    TaskGroups groups_;
    Day today_{1970, 1, 1};
    ColumnLayout layout_;
    Rows rows_;
    std::map<std::size_t, TaskListCard*> cards_;
    QWidget* end_;
    SoughtWords sought_{""};
    bool filling_ = false, keepsDrafts_ = false;
    struct {
        std::uint64_t time = 0; // of the event, in milliseconds; 0: none yet
        QPointF place;
    } lastPress_; // of a check button
};

}
