#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "Tacla/MainWindow/DesktopActions.h"

#include <QMainWindow>
#include <QTimer>

namespace tacla {

class AppModel;
class MainView;
class Preferences;

// Title, size and life of the window around the main view.
class MainWindow final : public QMainWindow {
    Q_OBJECT

  public:
    MainWindow(AppModel&, Preferences&, const DesktopActions&, const dravel::Now&);

    void present(const std::string& activationToken);
    MainView& view() { return *view_; }

  protected:
    void closeEvent(QCloseEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void changeEvent(QEvent*) override;

  private:
    void takeFirstSize();
    void rememberSize();

    AppModel& model_;
    Preferences& preferences_;
    MainView* view_;
    QTimer sizeSettled_;
    bool sized_ = false;
};

}
