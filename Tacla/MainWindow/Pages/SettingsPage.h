#pragma once

#include "DravelKit/DravelUI/DravelPage.h"
#include "Tacla/MainWindow/DesktopActions.h"

namespace dravel {
class Button;
class SettingRow;
class SettingsCard;
class Switch;
}

namespace tacla {

class AppModel;

class SettingsPage final : public dravel::DravelPage {
    Q_OBJECT

  public:
    SettingsPage(AppModel&, const DesktopActions&, QWidget* parent = nullptr);

  protected:
    bool eventFilter(QObject*, QEvent*) override;

  private:
    void addListCard();
    void offerCopies(QWidget& button);
    void addNotificationsCard();
    void addCalendarCard();
    void addAccountRows(dravel::SettingsCard&);
    void addSystemCard();
    void addFooter();
    void refresh();
    void refreshAccount();
    void refreshCalendar();

    AppModel& model_;
    const DesktopActions& actions_;
    dravel::SettingRow *file_, *reminders_, *test_, *account_, *client_, *mirror_, *sync_, *login_, *quick_;
    dravel::Button *allow_, *signIn_, *guide_, *copyAddress_, *leave_, *signOut_, *chooseKey_, *copyCommand_;
    dravel::Switch *mirrorOn_, *loginOn_;
};

}
