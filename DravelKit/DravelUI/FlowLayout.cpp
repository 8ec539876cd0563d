#include "DravelKit/DravelUI/FlowLayout.h"

#include <QWidget>

#include <algorithm>

namespace dravel {
namespace {

struct Placed {
    QLayoutItem* item;
    int x;
    QSize size;
};

}

FlowLayout::FlowLayout(int gap, int lineGap, QWidget* parent) : QLayout(parent), gap_(gap), lineGap_(lineGap) {
    setContentsMargins(0, 0, 0, 0);
}

FlowLayout::~FlowLayout() {
    for (QLayoutItem* item : items_) delete item;
}

void FlowLayout::setGapBefore(const QWidget* widget, int gap) {
    gapBefore_[widget] = gap;
    invalidate();
}

void FlowLayout::setTrailing(const QWidget* widget) {
    trailing_ = widget;
    invalidate();
}

void FlowLayout::addItem(QLayoutItem* item) { items_.push_back(item); }

QLayoutItem* FlowLayout::itemAt(int index) const {
    return index >= 0 && index < count() ? items_[static_cast<std::size_t>(index)] : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index) {
    QLayoutItem* item = itemAt(index);
    if (item) items_.erase(items_.begin() + index);
    return item;
}

int FlowLayout::heightForWidth(int width) const { return arrange(QRect(0, 0, width, 0), false); }

void FlowLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

QSize FlowLayout::minimumSize() const {
    QSize size(0, 0);
    for (const QLayoutItem* item : items_)
        if (!item->isEmpty()) size = size.expandedTo(item->minimumSize());
    return size;
}

QSize FlowLayout::sizeHint() const {
    QSize size(0, 0);
    for (QLayoutItem* item : items_) {
        if (item->isEmpty()) continue;
        const int gap = size.isEmpty() ? 0 : gapBefore_.value(item->widget(), gap_);
        size = {size.width() + gap + item->sizeHint().width(), std::max(size.height(), item->sizeHint().height())};
    }
    return size;
}

int FlowLayout::arrange(const QRect& rect, bool move) const {
    std::vector<Placed> line;
    int y = 0, x = 0, lineHeight = 0;
    const auto finish = [&](bool last) {
        for (const Placed& placed : line) {
            const bool trailing = last && trailing_ && placed.item->widget() == trailing_;
            const int left = trailing ? std::max(placed.x, rect.width() - placed.size.width()) : placed.x;
            const QPoint corner(left, y + (lineHeight - placed.size.height()) / 2);
            if (move) placed.item->setGeometry({rect.topLeft() + corner, placed.size});
        }
        line.clear();
    };
    for (QLayoutItem* item : items_) {
        if (item->isEmpty()) continue;
        const QSize size = item->sizeHint();
        const int gap = line.empty() ? 0 : gapBefore_.value(item->widget(), gap_);
        if (!line.empty() && x + gap + size.width() > rect.width()) {
            finish(false);
            y += lineHeight + lineGap_;
            x = lineHeight = 0;
        } else {
            x += gap;
        }
        line.push_back({item, x, {std::min(size.width(), std::max(rect.width(), 0)), size.height()}});
        x += size.width();
        lineHeight = std::max(lineHeight, size.height());
    }
    finish(true);
    return y + lineHeight;
}

}
