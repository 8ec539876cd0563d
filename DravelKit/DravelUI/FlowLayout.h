#pragma once

#include <QHash>
#include <QLayout>

#include <vector>

namespace dravel {

// Items side by side, wrapped into lines; every line is as high as its highest item, items are centred in it.
class FlowLayout final : public QLayout {
  public:
    FlowLayout(int gap, int lineGap, QWidget* parent = nullptr);
    ~FlowLayout() override;

    void setGapBefore(const QWidget*, int); // another gap for this one item, when it is not the first of its line
    void setTrailing(const QWidget*);       // stands at the right end of the last line

    void addItem(QLayoutItem*) override;
    int count() const override { return static_cast<int>(items_.size()); }
    QLayoutItem* itemAt(int) const override;
    QLayoutItem* takeAt(int) override;
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int) const override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void setGeometry(const QRect&) override;

  private:
    int arrange(const QRect&, bool move) const; // the height used

    int gap_, lineGap_;
    std::vector<QLayoutItem*> items_;
    QHash<const QWidget*, int> gapBefore_;
    const QWidget* trailing_ = nullptr;
};

}
