#pragma once

#include "DravelKit/Run/Background.h"
#include "Tacla/AppModel/ModelState.h"
#include "Tacla/TaskDocument/TaskDocument.h"
#include "Tacla/TaskList/Successors.h"

#include <memory>

namespace tacla {

// The list of the running application. Its file may stand on a disk that is slow, or hangs: all that waits for it is a
// background job, one at a time and in the order of asking. What a quick disk does within a blink is waited for, and
// has happened when the call returns. Main thread only.
class LiveDocument {
  public:
    struct State {
        std::filesystem::path file;
        std::size_t unreadDates = 0;
        std::optional<std::string> fileError;
        std::optional<UndoBar> undoBar;
        bool canUndo = false; // whether the file still holds what is undone shows when it is
    };

    // What a job came to.
    struct News {
        std::optional<TaskList> tasks{};                // as they were read, if they were
        std::shared_ptr<const Successors> successors{}; // of those that were there before, if any changed
        std::size_t unreadDates = 0;
        std::optional<std::string> failure{}; // the file could not be read, written or created
        bool written = false;                 // by an edit
        bool writeFailed = false;
        bool opened = false;              // it is another file
        bool savedWhileRead = false;      // or it was to be read, and could not be
        RenamedKeys::Map renamed{};       // by the edit
        Tasks silenced{};                 // whose reminder has rung under another title, or was undone
        std::optional<std::string> bar{}; // what there is to say of it
        bool canUndo = false;
    };

    enum class Outcome { saved, unchanged, failed };
    using Done = std::function<void(Outcome)>;
    using Then = std::function<void()>;

    // `heard` is told of each job, `changed` of what changes in between.
    LiveDocument(dravel::MainLoop&, dravel::Background& disk, dravel::UserFolders, std::filesystem::path file,
                 std::function<void(News)> heard, std::function<void()> changed);

    const State& state() const { return state_; }
    std::vector<dravel::FileCopies::Copy> copies() const { return TaskDocument(state_.file, folders_).copies(); }

    void begin(Then);           // the first reading; the file in the Documents is created
    void read();                // in any case
    void readIfChanged(Then);   // `then` is called in any case
    bool check(bool inAnyCase); // the poll; false when it is left out, because a job runs
    void pruneCopies();

    // Edits, of tasks as they were seen: one that is no longer there changes nothing. `done` of a save is called before
    // its news.
    void apply(const UserEdit&, Done = {});
    void toggle(const TaskItem& task) { apply(UserEdit::setDone(task, !task.done, today())); }
    void reschedule(const TaskItem& task, Day to, std::optional<Clock> time) {
        apply(UserEdit::reschedule(task, to, time, today()));
    }
    void edit(const TaskItem& task, const TaskChange& change, Done done = {}) {
        apply(UserEdit::change(task, change, today()), std::move(done));
    }
    void remove(const TaskItem& task) { apply(UserEdit::remove(task)); }
    void postpone(const TaskSelection& seen, Day to) { apply(UserEdit::postpone(seen, to, today())); } // one edit
    // `added` gets none when the tasks are in the file, else why they are not.
    using Added = std::function<void(const std::optional<std::string>& whyNot)>;
    void add(const std::vector<NewTask>&, const Added& = {}); // one at least

    // Takes the last of these edits back, also after its bar is gone, as long as the file still holds what it wrote.
    void undo();
    void bringBack(const std::filesystem::path& copy);
    void open(const std::filesystem::path&, bool creates = false); // another; with the new-file text, if it is missing
    void finishSaving();                                           // waits for the disk, however long it takes

    void show(std::optional<UndoBar>); // for ten seconds

  private:
    using Job = std::function<News(TaskDocument&)>;

    Day today() const { return Day::of(loop_.now()); }
    void run(Job, std::function<void(News)> done, std::chrono::milliseconds patience);
    void save(Job, Done = {});
    void hear(News);
    void settle(News); // hears it, unless there is nothing new

    dravel::MainLoop& loop_;
    dravel::Background& disk_;
    dravel::UserFolders folders_;
    std::function<void(News)> heard_;
    std::function<void()> changed_;

    State state_;
    Instant failed_{};           // since when there is a fileError
    Instant writeFailureSaid_{}; // until then no reading takes it away
    int saving_ = 0;
    dravel::Timer barEnd_, slow_;

    std::shared_ptr<TaskDocument> document_; // the running job's, which may be left behind at the end
    dravel::JobQueue queue_;
};

}
