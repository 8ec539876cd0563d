#pragma once

#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/Foundation/Instant.h"
#include "DravelKit/Run/Background.h"
#include "Tacla/MainWindow/PageContents.h"

// The pages that show tasks.
namespace dravel {
class EmptyCard;
class TextField;
}

namespace tacla {

class AddTaskCard;
class AppModel;
class HeroCard;
class ProblemsCard;
class TaskColumn;

class TodayPage final : public dravel::DravelPage {
    Q_OBJECT

  public:
    TodayPage(AppModel&, const dravel::Now&, QWidget* parent = nullptr);
    void beginTask(); // the add card comes into view, ready to type
    void forgetDay(); // the one that was picked for new tasks

  private:
    void refresh();

    AppModel& model_;
    HeroCard* hero_;
    AddTaskCard* add_;
    ProblemsCard* problems_;
    TaskColumn* tasks_;
};

// A page that is a list of tasks under a title: late, upcoming or done.
class ListPage final : public dravel::DravelPage {
    Q_OBJECT

  public:
    ListPage(Section, AppModel&, const dravel::Now&, QWidget* parent = nullptr);
    void postponeAll(); // asks where to

  private:
    void refresh(ListContents);

    AppModel& model_;
    ProblemsCard* problems_;
    dravel::EmptyCard* empty_;
    TaskColumn* tasks_;
};

// All tasks whose title holds the words that are typed at its head.
class FindPage final : public dravel::DravelPage {
    Q_OBJECT

  public:
    FindPage(AppModel&, const dravel::Now&, QWidget* parent = nullptr);
    void begin(); // ready to type, over what was typed last

  Q_SIGNALS:
    void closed();

  protected:
    void keyPressEvent(QKeyEvent*) override;
    bool eventFilter(QObject*, QEvent*) override;

  private:
    void readTasks();
    void find();
    void show(const QString& typed, const Places& found);

    AppModel& model_;
    TaskList searched_; // what the finder was made of
    std::shared_ptr<const TaskFinder> finder_;
    dravel::JobQueue jobs_; // a long list is made ready and searched beside the main thread
    dravel::TextField* words_;
    dravel::EmptyCard* none_;
    TaskColumn* tasks_;
};

}
