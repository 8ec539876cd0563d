#pragma once

#include "DravelKit/DravelUI/TextPaint.h"
#include "DravelKit/Foundation/FoldedText.h"
#include "DravelKit/Foundation/Instant.h"
#include "Tacla/MainWindow/Rows/RowContents.h"
#include "Tacla/TaskList/TaskItem.h"

#include <QMenu>
#include <QPoint>
#include <QPointer>
#include <QWidget>

#include <optional>
#include <vector>

namespace dravel {
class IconButton;
}

namespace tacla {

class AppModel;
class CheckButton;
class TaskEditor;

// One task: check button, title, tags and actions menu; or its inline editor.
class TaskRow final : public QWidget {
    Q_OBJECT

  public:
    enum class Stop { check, menu };

    // The column that the row stands in.
    class Container {
      public:
        virtual void step(const TaskRow&, int by, Stop) = 0; // to the same control of a row above or below
        virtual bool tab(const TaskRow&, bool forward) = 0;  // beyond the row's controls
        virtual void heightChanged() = 0;
        virtual void highlightChanged() = 0;
        virtual bool isRepeated(const QMouseEvent& press) = 0; // belongs to the click before it

      protected:
        ~Container() = default;
    };

    TaskRow(AppModel&, const dravel::Now&, Container&, QWidget* parent = nullptr);
    ~TaskRow() override;

    const TaskItem& task() const { return task_; }
    void setTask(const TaskItem&, Day today, bool showDay);
    void setMarks(const std::vector<dravel::TextRange>&); // letters of the title that were looked for
    void setSeparated(bool);                              // a line above, unless the row is highlighted
    int heightFor(int width);

    static int titleWidth(int rowWidth);
    static int heightOf(int titleLines, int tagLines);

    bool isEditing() const { return editor_ != nullptr; }
    bool holdsDraft() const; // something was typed that is not saved yet
    bool isHighlighted() const { return hovered_ || isEditing() || menu_; }
    bool isPinned() const; // must not go away while it is out of view

    QWidget* lastControl() const;
    void focus(Stop, Qt::FocusReason);
    std::optional<Stop> focusedStop() const;
    Qt::FocusReason focusReason() const { return focusReason_; } // how the focus came to its control

    void startEditing();
    void commitEdit(Qt::FocusReason = Qt::OtherFocusReason);
    void cancelEdit(Qt::FocusReason reason = Qt::OtherFocusReason) {
        if (editor_) closeEditor(reason);
    }
    void openMenu();
    void openAgainMenu(); // of a done task

  protected:
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void enterEvent(QEnterEvent*) override { setHovered(true); }
    void leaveEvent(QEvent*) override { setHovered(false); }
    void mouseDoubleClickEvent(QMouseEvent*) override;
    void contextMenuEvent(QContextMenuEvent*) override;
    bool event(QEvent*) override;
    bool eventFilter(QObject*, QEvent*) override;
    bool focusNextPrevChild(bool forward) override;

  private:
    struct PlacedTag {
        TaskTag tag;
        QPoint position;
    };

    const dravel::Paragraph& title(int width);
    int placeTags(int width); // the number of tag lines
    void placeControls();
    QRect editorPlace() const;
    void closeEditor(Qt::FocusReason);
    void editorGrew() { placeControls(), container_.heightChanged(); }
    void explain(const QString& whyNotSaved);
    void setHovered(bool);
    void highlightChanged();
    void perform(RowCommand, const TaskItem&);
    void popUp(QMenu&, dravel::IconButton&);
    bool keyPressed(Stop, int key, Qt::KeyboardModifiers);
    Day currentDay() const { return Day::of(now_()); }

    AppModel& model_;
    const dravel::Now& now_;
    Container& container_;
    TaskItem task_{};               // as shown
    TaskItem pressed_{}, edited_{}; // as it was when its check button was pressed, and when its editor opened
    Day today_{1970, 1, 1};
    QString titleText_;
    std::optional<dravel::Paragraph> title_;
    QList<QTextLayout::FormatRange> marks_;
    std::vector<PlacedTag> tags_;
    CheckButton* check_;
    dravel::IconButton *menuButton_, *againButton_;
    TaskEditor* editor_ = nullptr;
    bool isCommitting_ = false;
    QPointer<QMenu> menu_;
    Qt::FocusReason focusReason_ = Qt::OtherFocusReason;
    bool hovered_ = false, separated_ = false;
};

}
