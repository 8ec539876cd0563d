#include "Tacla/AppModel/LiveDocument.h"

#include "Tacla/Reminders/ReminderPlan.h"
#include "Tacla/TaskList/TaskFile.h"

#include <utility>

namespace tacla {

using namespace std::chrono_literals;
using dravel::FileError;
using std::filesystem::path;
using News = LiveDocument::News;

// Less than two frames, and than anybody notices.
static constexpr auto blink = 20ms;

// What could not be written is said long enough to be read, whether or not the list can be, and why not.
static constexpr auto shownAtLeast = 6s;

static constexpr auto saysThatItSavesAfter = 500ms;
static const UndoBar saving{"Enregistrement…", false};

namespace {

std::string failure(std::string_view deed, const path& file, const FileError& error) {
    return sentence(impossible(deed, file, error));
}

News notWritten(std::string_view deed, const path& file, const FileError& error) {
    return {.failure = failure(deed, file, error), .writeFailed = true};
}

News reading(TaskDocument& document, News news = {}) {
    try {
        const auto before = document.tasks();
        news.tasks = document.read();
        if (!news.tasks->sharesAllWith(before))
            news.successors = std::make_shared<const Successors>(before, *news.tasks);
        news.unreadDates = document.unreadDates();
    } catch (const FileError& error) {
        if (!news.failure) news.failure = failure("de lire", document.file(), error);
    }
    return news;
}

News checked(TaskDocument& document, bool inAnyCase) {
    const auto stamp = document.onDisk();
    if (!inAnyCase && !document.isStale(stamp)) return {};
    auto news = reading(document);
    news.savedWhileRead = stamp != document.lastRead();
    return news;
}

News edited(TaskDocument& document, const UserEdit& edit, Instant now) {
    std::optional<TaskDocument::Change> change;
    try {
        change = document.edit(edit.apply, now);
    } catch (const FileError& error) {
        return notWritten("d'écrire", document.file(), error);
    }
    if (!change) return checked(document, false); // the task may have become another one: what is shown is not it
    News news{.written = true, .bar = edit.said};
    if (edit.retitled) {
        news.renamed = TaskFile::renamedKeys(change->before, change->after);
        const auto renamed = news.renamed.find(*edit.retitled);
        const auto& key = renamed == news.renamed.end() ? *edit.retitled : renamed->second;
        if (auto task = TaskFile::find(change->after, key)) news.silenced = {std::move(*task)};
    }
    change.reset(); // a long list needs the room
    return reading(document, std::move(news));
}

News undone(TaskDocument& document, Instant now) {
    if (!document.canUndo()) return {};
    TaskDocument::Undone undone;
    try {
        undone = document.undo(now);
    } catch (const FileError& error) {
        return notWritten("d'écrire", document.file(), error); // may be tried again
    }
    if (undone.changedSince) return {.bar = "Le fichier a changé depuis : rien n'a été annulé."};
    auto givenBack = remindersGivenBack(undone.change);
    undone.change = {}; // a long list needs the room
    return reading(document, {.written = true, .renamed = std::move(undone.keys), .silenced = std::move(givenBack)});
}

News broughtBack(TaskDocument& document, const path& copy, Instant now) {
    if (document.isStale(document.onDisk())) // what was to be replaced is not what was looked at
        return reading(document, {.bar = "Le fichier a changé depuis : rien n'a été rétabli."});
    try {
        return edited(document, UserEdit::bringBack(dravel::SafeFile::readText(copy)), now);
    } catch (const FileError& error) {
        return {.failure = failure("de lire", copy, error)};
    }
}

News opened(TaskDocument& document, const path& file, bool creates) {
    try {
        if (creates) TaskDocument::createIfMissing(file);
    } catch (const FileError& error) {
        return notWritten("de créer", file, error);
    }
    document.open(file);
    return reading(document, {.opened = true});
}

News begun(TaskDocument& document, bool creates) {
    News news;
    try {
        if (creates) TaskDocument::createIfMissing(document.file());
    } catch (const FileError& error) {
        news = notWritten("de créer", document.file(), error);
    }
    return reading(document, std::move(news));
}

}

LiveDocument::LiveDocument(dravel::MainLoop& loop, dravel::Background& disk, dravel::UserFolders folders, path file,
                           std::function<void(News)> heard, std::function<void()> changed)
    : loop_(loop), disk_(disk), folders_(std::move(folders)), heard_(std::move(heard)), changed_(std::move(changed)),
      document_(std::make_shared<TaskDocument>(file, folders_)), queue_(disk) {
    state_.file = std::move(file);
}

void LiveDocument::run(Job job, std::function<void(News)> done, std::chrono::milliseconds patience) {
    const std::function<News()> onDisk = [document = document_, job = std::move(job)] {
        auto news = job(*document);
        news.canUndo = document->canUndo();
        return news;
    };
    queue_.add<News>(
        onDisk,
        [done = std::move(done)](dravel::Outcome<News> outcome) {
            if (const auto* defect = std::get_if<std::exception_ptr>(&outcome)) std::rethrow_exception(*defect);
            done(std::get<News>(std::move(outcome)));
        },
        patience);
}

void LiveDocument::begin(Then then) {
    const bool creates = state_.file == documentsTaskFile(folders_);
    const auto done = [this, then = std::move(then)](News news) {
        hear(std::move(news));
        then();
    };
    run([creates](TaskDocument& document) { return begun(document, creates); }, done, blink);
}

void LiveDocument::read() {
    run([](TaskDocument& document) { return reading(document); }, [this](News news) { hear(std::move(news)); }, blink);
}

void LiveDocument::readIfChanged(Then then) {
    const auto done = [this, then = std::move(then)](News news) {
        settle(std::move(news));
        then();
    };
    run([](TaskDocument& document) { return checked(document, false); }, done, blink);
}

bool LiveDocument::check(bool inAnyCase) {
    if (!queue_.isIdle()) return false;
    const bool mayBeOver = state_.fileError && loop_.now() - failed_ >= shownAtLeast;
    run([all = inAnyCase || mayBeOver](TaskDocument& document) { return checked(document, all); },
        [this](News news) { settle(std::move(news)); }, blink);
    return true;
}

void LiveDocument::pruneCopies() {
    const auto prune = [now = loop_.now()](const TaskDocument& document) {
        document.pruneCopies(now);
        return News();
    };
    run(prune, [](const News&) {}, {});
}

void LiveDocument::apply(const UserEdit& edit, Done done) {
    save([edit, now = loop_.now()](TaskDocument& document) { return edited(document, edit, now); }, std::move(done));
}

void LiveDocument::add(const std::vector<NewTask>& tasks, const Added& added) {
    const auto day = tasks.front().day;
    const auto edit = UserEdit::add(tasks, day == today() ? "Tâche ajoutée" : "Ajoutée pour " + day.longLabel());
    if (!edit) return added ? added("Ce titre ne peut pas être écrit.") : void();
    apply(*edit, [this, added](Outcome outcome) {
        if (added) added(outcome == Outcome::failed ? state_.fileError : std::nullopt);
    });
}

void LiveDocument::undo() {
    save([now = loop_.now()](TaskDocument& document) { return undone(document, now); });
}

void LiveDocument::bringBack(const path& copy) {
    save([copy, now = loop_.now()](TaskDocument& document) { return broughtBack(document, copy, now); });
}

void LiveDocument::save(Job job, Done done) {
    if (saving_++ == 0) {
        slow_ = loop_.after(saysThatItSavesAfter, [this] {
            barEnd_ = {};
            state_.undoBar = saving;
            changed_();
        });
    }
    run(
        std::move(job),
        [this, done = std::move(done)](News news) {
            if (--saving_ == 0) slow_ = {};
            if (news.written || news.bar || state_.undoBar == saving) // what stood there is answered
                show(news.bar ? std::optional(UndoBar{*news.bar, news.written}) : std::nullopt);
            const auto outcome = news.written       ? Outcome::saved
                                 : news.writeFailed ? Outcome::failed
                                                    : Outcome::unchanged;
            if (done && outcome == Outcome::saved) done(outcome);
            settle(std::move(news));
            if (done && outcome != Outcome::saved) done(outcome);
        },
        blink);
}

void LiveDocument::open(const path& file, bool creates) {
    const auto done = [this, file](News news) {
        if (news.opened) {
            state_.file = file;
            writeFailureSaid_ = {};
            show({});
        }
        hear(std::move(news));
    };
    run([=](TaskDocument& document) { return opened(document, file, creates); }, done, blink);
}

void LiveDocument::finishSaving() {
    if (saving_ > 0) disk_.finish();
}

void LiveDocument::settle(News news) {
    if (news.tasks || news.failure || news.bar || news.written) hear(std::move(news));
}

void LiveDocument::hear(News news) {
    const auto now = loop_.now();
    if (news.written) writeFailureSaid_ = {};
    if (news.tasks) state_.unreadDates = news.unreadDates;
    state_.canUndo = news.canUndo;
    if ((news.tasks || news.failure) && (news.writeFailed || now >= writeFailureSaid_)) {
        state_.fileError = news.failure;
        failed_ = now;
    }
    if (news.writeFailed) writeFailureSaid_ = now + shownAtLeast;
    heard_(std::move(news));
}

void LiveDocument::show(std::optional<UndoBar> bar) {
    state_.undoBar = std::move(bar);
    barEnd_ = {};
    if (!state_.undoBar) return;
    barEnd_ = loop_.after(10s, [this] {
        state_.undoBar.reset();
        changed_();
    });
}

}
