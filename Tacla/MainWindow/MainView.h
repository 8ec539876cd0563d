#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Foundation/Signal.h"
#include "Tacla/AppModel/ModelState.h"
#include "Tacla/MainWindow/DesktopActions.h"
#include "Tacla/MainWindow/PageContents.h"

#include <QPointer>
#include <QWidget>

#include <array>
#include <functional>
#include <optional>
#include <string>

class QStackedLayout;

namespace dravel {
class DravelShell;
}

namespace tacla {

class AppModel;
class FindPage;
class WelcomeView;

// The window's content: the sidebar and the page of the selected section, or the welcome. Pages are made when they are
// first visited.
class MainView final : public QWidget {
    Q_OBJECT

  public:
    MainView(AppModel&, DesktopActions, dravel::Now, QWidget* parent = nullptr);

    void select(Section);
    void beginTask();                      // on the today page, unless the welcome shows
    void showTask(const std::string& key); // likewise: its row, on the page where it is
    void readyToType();                    // a new task, where the today page shows and nothing else is being typed
    void closed();                         // what was chosen for new tasks is forgotten
    bool copyTask();                       // the line of the row that has the focus

  private:
    void modelChanged();
    void showWelcomeOrPages();
    dravel::DravelShell& shell();
    void showPage();
    void showUndoBar();
    QWidget* makePage(Section);
    void addShortcuts();
    void addShortcut(const QKeySequence&, std::function<void()>);
    void beginFind();
    void endFind();
    void postponeLate();

    AppModel& model_;
    const DesktopActions actions_;
    const dravel::Now now_;
    Section section_ = Section::today;
    std::optional<std::string> requested_; // the model's last request that was seen
    std::optional<UndoBar> undoBar_;       // the one that shows
    QStackedLayout* views_;
    WelcomeView* welcome_ = nullptr;
    dravel::DravelShell* shell_ = nullptr;
    std::array<QWidget*, sections.size()> pages_{};
    FindPage* find_ = nullptr;
    QPointer<QWidget> beforeFind_; // what had the focus
    dravel::Connection connection_;
};

}
