#pragma once

#include <QIcon>
#include <QWidget>

class QStackedWidget;

namespace dravel {

class Button;
class SidebarList;
class TextLabel;

// A short message over the foot of a page, with a button when there is something to do about it. It never takes the
// focus by itself; screen readers are told when it comes or says something else.
class Toast final : public QWidget {
    Q_OBJECT

  public:
    explicit Toast(QWidget* parent = nullptr);

    void tell(const QString& text, const QString& action = {}); // no action: no button
    void dismiss();
    int placeAtFootOf(const QRect& page); // how much of the page's foot it covers

  Q_SIGNALS:
    void acted();
    void changed(); // comes, goes or wants another width

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    TextLabel* text_;
    Button* action_;
};

// The frame of a window: a sidebar with brand, list and foot, and the area of the page beside it.
class DravelShell final : public QWidget {
    Q_OBJECT

  public:
    static constexpr int idealSidebar = 210, minimumSidebar = 190;
    // Narrower than that, half of a small screen, the sidebar shows its symbols only.
    static constexpr int foldsBelow = 820, foldedSidebar = 64;

    // The list's name for screen readers. The icon is drawn 28 px large.
    DravelShell(const QString& brand, const QIcon& icon, const QString& listName, QWidget* parent = nullptr);

    SidebarList& list() const { return *list_; }
    Toast& toast() const { return *toast_; } // over the foot of the page, which scrolls past it
    void setFoot(QWidget*);                  // takes it
    void setTool(QWidget*);                  // takes it: beside the brand, while there is room
    void showPage(QWidget*);                 // takes it on the first call; pages can be made when they are first wanted
    QWidget* page() const;                   // the one that is shown
    int sidebarWidth() const { return sidebarWidth_; }
    void setSidebarWidth(int); // kept between the minimum and what leaves the page its own

  protected:
    void keyPressEvent(QKeyEvent*) override;
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;

  private:
    void arrange();
    void arrangeToast();

    QIcon icon_;
    QWidget* brand_;
    SidebarList* list_;
    Toast* toast_;
    QWidget *foot_ = nullptr, *tool_ = nullptr;
    QStackedWidget* pages_;
    QWidget* handle_;
    int wantedSidebar_ = idealSidebar, sidebarWidth_ = idealSidebar;
};

}
