#pragma once

#include "DravelKit/DravelUI/Card.h"

#include <QScrollArea>
#include <QVBoxLayout>

namespace dravel {

// A page: one vertical scroll area with a centred column of cards, at most 820 wide, under an optional title and
// subtitle. Its accessible name is the title (set one when the page has no head).
class DravelPage : public QScrollArea {
    Q_OBJECT

  public:
    static constexpr int maximumColumn = 820, margin = Theme::Space::lg;

    explicit DravelPage(QWidget* parent = nullptr);
    DravelPage(const QString& title, const QString& subtitle, QWidget* parent = nullptr);

    void setSubtitle(const QString&);
    void add(QWidget*);       // at the foot of the column; a hidden widget takes no room
    void remove(QWidget*);    // out of the column; the caller deletes it
    CardStage& stage() const; // parent of everything added
    QRect
    visiblePart(const QWidget&) const; // the part of a descendant that shows, in its own coordinates; may be empty
    void reveal(const QWidget&, int slack = Theme::Space::md); // scrolls a descendant into view
    void setCoveredFoot(int height); // something lies over the foot of the view: the column can be scrolled past it

  Q_SIGNALS:
    void viewChanged(); // scrolled or resized: what shows may be other rows

  protected:
    void keyPressEvent(QKeyEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void scrollContentsBy(int, int) override;

  private:
    QWidget* controlInView(bool topmost) const;
    void fitColumn();

    QVBoxLayout* column_;
    TextLabel* subtitle_ = nullptr;
    QWidget* head_ = nullptr;
    int coveredFoot_ = 0;
};

}
