#pragma once

#include "Tacla/MainWindow/DesktopActions.h"

#include <QWidget>

namespace dravel {
class WelcomePage;
class WelcomeStep;
}

namespace tacla {

class AppModel;

// What the first launch shows instead of the pages.
class WelcomeView final : public QWidget {
    Q_OBJECT

  public:
    WelcomeView(AppModel&, const DesktopActions&, QWidget* parent = nullptr);

  private:
    void addSteps(dravel::WelcomePage&);
    void refresh();
    void connectAgenda();

    AppModel& model_;
    const DesktopActions& actions_;
    dravel::WelcomeStep *list_ = nullptr, *notifications_ = nullptr, *agenda_ = nullptr;
};

}
