#include "Tacla/MainWindow/Rows/TaskRow.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Theme.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/MainWindow/Rows/CheckButton.h"
#include "Tacla/MainWindow/Rows/TaskEditor.h"
#include "Tacla/TaskList/TaskFile.h"

#include <QHelpEvent>
#include <QMenu>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace tacla {

namespace Theme = dravel::Theme;
using namespace Qt::StringLiterals;

namespace {

constexpr int padding = 8, textLeft = 40, titleTop = 10, tagTop = 2, tagHeight = 18, tagGap = 12, tagLineGap = 4;
constexpr int hitArea = 32, menuFace = 28, menuGap = 12, editorBottom = 12;

// A line of whole device pixels at the top of the row: at a scale of 1.25 all lines look alike.
void paintSeparator(QPainter& painter, int left, int right, const QColor& colour) {
    const qreal ratio = painter.device()->devicePixelRatioF();
    const qreal top = painter.deviceTransform().map(QPointF()).y();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(QRectF(left, (std::round(top) - top) / ratio, right - left, std::floor(ratio) / ratio), colour);
    painter.setRenderHint(QPainter::Antialiasing);
}

Theme::TextStyle titleStyle(bool done) { return Theme::Typography::taskTitle.struckOut(done); }

}

TaskRow::TaskRow(AppModel& model, const dravel::Now& now, Neighbourhood& neighbourhood, QWidget* parent)
    : QWidget(parent), model_(model), now_(now), neighbourhood_(neighbourhood), check_(new CheckButton(this)),
      menuButton_(new dravel::IconButton(dravel::Symbol::ThreeDots, u"Modifier, reporter ou supprimer"_s, this)) {
    setObjectName(u"task"_s);
    menuButton_->setObjectName(u"menu"_s);
    menuButton_->setToolTip(menuButton_->accessibleName());
    check_->installEventFilter(this);
    menuButton_->installEventFilter(this);
    // The model reloads at once and may take the row away: it gets a copy of the task.
    connect(check_, &QAbstractButton::clicked, this, [this] { model_.toggle(TaskItem(task_)); });
    connect(check_, &QAbstractButton::toggled, this, [this](bool on) {
        if (on == task_.done) return;
        check_->setChecked(task_.done); // a screen reader toggled it: the same as a click
        model_.toggle(TaskItem(task_));
    });
    connect(menuButton_, &QAbstractButton::clicked, this, &TaskRow::openMenu);
}

// The menu goes with the row, but must not tell it so.
TaskRow::~TaskRow() {
    if (menu_) menu_->disconnect(this);
}

void TaskRow::setTask(const TaskItem& task, Day today, bool showDay) {
    const bool titleChanged = task.title != task_.title || task.done != task_.done || titleText_.isNull();
    task_ = task;
    today_ = today;
    if (titleChanged) {
        titleText_ = toQt(TaskFile::dropStrongMark(task.title));
        title_.reset();
        check_->setTask(titleText_, task.done, task.strong());
        setAccessibleName(titleText_);
    }
    tags_.clear();
    QStringList texts;
    for (auto& tag : taskTags(task, today, showDay)) {
        texts << toQt(tag.text);
        tags_.push_back({std::move(tag), {}});
    }
    setAccessibleDescription(texts.join(u", "_s));
    if (editor_) editor_->setToday(today);
    placeTags(width());
    update();
}

void TaskRow::setSeparated(bool on) {
    if (separated_ == on) return;
    separated_ = on;
    update();
}

int TaskRow::titleWidth(int rowWidth) { return std::max(1, rowWidth - textLeft - padding - menuFace - menuGap); }

int TaskRow::heightOf(int titleLines, int tagLines) {
    const int titleHeight = titleLines * Theme::Typography::taskTitle.line;
    if (tagLines == 0) return titleTop + titleHeight + titleTop;
    return titleTop + titleHeight + tagTop + tagLines * tagHeight + (tagLines - 1) * tagLineGap + padding;
}

int TaskRow::heightFor(int width) {
    if (editor_) return padding + TaskEditor::editorHeight + editorBottom;
    const int titleLines = title(width).height() / Theme::Typography::taskTitle.line;
    return heightOf(titleLines, placeTags(width));
}

const dravel::Paragraph& TaskRow::title(int width) {
    const int room = titleWidth(width);
    if (!title_ || title_->width() != room) title_.emplace(titleText_, titleStyle(task_.done), room);
    return *title_;
}

int TaskRow::placeTags(int width) {
    if (tags_.empty()) return 0;
    const int right = textLeft + titleWidth(width);
    int lines = 1;
    QPoint position(textLeft, titleTop + title(width).height() + tagTop);
    for (auto& [tag, place] : tags_) {
        const int tagWidth = dravel::tagSize(tagLookOf(tag.role), toQt(tag.text)).width();
        if (position.x() > textLeft && position.x() + tagWidth > right) {
            position = {textLeft, position.y() + tagHeight + tagLineGap};
            ++lines;
        }
        place = position;
        position.rx() += tagWidth + tagGap;
    }
    return lines;
}

void TaskRow::placeControls() {
    constexpr int firstLine = 20; // the middle of the title's first line
    const int checkMiddle = editor_ ? padding + TaskEditor::titleHeight / 2 : firstLine;
    check_->setGeometry(padding + 10 - hitArea / 2, checkMiddle - hitArea / 2, hitArea, hitArea);
    menuButton_->setGeometry(width() - padding - (menuFace + hitArea) / 2, firstLine - hitArea / 2, hitArea, hitArea);
    if (editor_) editor_->setGeometry(textLeft, padding, width() - textLeft - padding, TaskEditor::editorHeight);
}

void TaskRow::resizeEvent(QResizeEvent*) {
    placeControls();
    placeTags(width());
}

void TaskRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isHighlighted()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(Theme::rowHover.on(*this));
        painter.drawRoundedRect(rect(), Theme::Radius::sm, Theme::Radius::sm);
    } else if (separated_) {
        paintSeparator(painter, textLeft, width() - padding, Theme::tile.on(*this));
    }
    if (editor_) return;
    const auto appearance = dravel::appearanceOf(*this);
    title(width()).paint(painter, {textLeft, titleTop}, (task_.done ? Theme::textTertiary : Theme::text).on(*this));
    for (const auto& [tag, position] : tags_)
        dravel::paintTag(painter, position, appearance, tag.symbol, toQt(tag.text), tagLookOf(tag.role));
}

void TaskRow::setHovered(bool on) {
    hovered_ = on;
    highlightChanged();
}

void TaskRow::highlightChanged() {
    check_->setRowHighlighted(isHighlighted());
    menuButton_->setEmphasised(isHighlighted());
    update();
    neighbourhood_.highlightChanged();
}

bool TaskRow::isPinned() const {
    const auto* focused = focusWidget();
    return isEditing() || menu_ || (focused && focused->hasFocus() && isAncestorOf(focused));
}

bool TaskRow::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && !editor_) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const QRect area(textLeft, titleTop, titleWidth(width()), title(width()).height());
        if (area.contains(help->pos()))
            QToolTip::showText(help->globalPos(), u"Double-clic pour modifier"_s, this, area);
        return true;
    }
    return QWidget::event(event);
}

void TaskRow::mouseDoubleClickEvent(QMouseEvent*) { startEditing(); }

}
