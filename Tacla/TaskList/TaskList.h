#pragma once

#include "Tacla/TaskList/TaskItem.h"
#include "Tacla/TaskList/TaskKeys.h"
#include "Tacla/TaskList/UsualNotation.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tacla {

// Where a task stands in its list, from 0.
using Place = std::uint32_t;
using Places = std::vector<Place>;
struct DayPlaces {
    PackedDay day;
    Places places;
};

// A title is drawn, and kept beside its list, up to so many bytes.
inline constexpr std::size_t longestDrawn = 10'000;

// Reads like a vector of tasks, each made when it is asked for.
template <class List>
class TaskIterator {
  public:
    using difference_type = std::ptrdiff_t;
    using value_type = TaskItem;
    using reference = TaskItem;
    using pointer = void;
    using iterator_category = std::input_iterator_tag;

    TaskIterator() = default;
    TaskIterator(const List& list, std::size_t at) : list_(&list), at_(at) {}

    TaskItem operator*() const { return (*list_)[at_]; }
    TaskIterator& operator++() { return ++at_, *this; }
    TaskIterator operator++(int) { return {*list_, at_++}; }
    bool operator==(const TaskIterator& other) const { return at_ == other.at_; }

  private:
    const List* list_ = nullptr;
    std::size_t at_ = 0;
};

// The tasks of a text in file order, for lists of any length: the text itself and fifty bytes a task, where TaskItems
// would take several times the text. All copies share them; nothing changes them any more.
class TaskList {
  public:
    // What the views ask of every task.
    struct Brief {
        PackedDay day, completed; // 0 for none; the day it was done, else its own: of done tasks only
        std::uint32_t titleLength;
        std::uint16_t minutes; // of the day from 1 on, 0 for none
        bool done : 1, alone : 1, strong : 1;
        bool marked : 1; // its row has a tag beside the moment
    };
    struct Dated {
        Place place;
        PackedDay day : 31, done : 1;
    };
    struct Orders {
        std::vector<Dated> byMoment;         // all that have a day, by moment, then by line
        std::vector<DayPlaces> byCompletion; // done ones, the newest day first
        Places doneAnyTime;                  // done ones without any day
    };

    TaskList();
    explicit TaskList(std::string text);

    std::size_t size() const { return data_->briefs.size(); }
    bool empty() const { return data_->briefs.empty(); }
    TaskItem operator[](std::size_t) const; // with the whole title
    TaskItem at(std::size_t task) const;    // throws std::out_of_range
    TaskItem front() const { return at(0); }
    TaskItem back() const { return at(size() - 1); }
    TaskIterator<TaskList> begin() const { return {*this, 0}; }
    TaskIterator<TaskList> end() const { return {*this, size()}; }

    TaskItem drawn(std::size_t) const;           // an endless title is cut
    TaskItem whole(const TaskItem& drawn) const; // the one that was cut, if it is here
    std::string_view title(std::size_t) const;
    std::int64_t line(std::size_t task) const { return data_->wheres[task].line; }
    KeyNumber key(std::size_t task) const { return data_->keys[task]; }
    const Brief& brief(std::size_t task) const { return data_->briefs[task]; }
    const std::vector<Brief>& briefs() const { return data_->briefs; }
    const std::vector<KeyNumber>& keys() const { return data_->keys; }
    const Orders& orders() const { return data_->orders; }

    std::optional<Place> find(std::string_view key) const; // the first one
    std::optional<Place> atLine(std::int64_t) const;

    bool sharesAllWith(const TaskList& other) const { return data_ == other.data_; }
    // Whether a task reads as one of another list, be it in another line, or of another key.
    bool readsAs(std::size_t task, const TaskList& other, std::size_t otherTask) const;
    bool operator==(const TaskList&) const; // the same tasks, whatever else the texts hold
    bool operator==(const std::vector<TaskItem>&) const;

  private:
    struct Where {
        std::size_t title; // in the text
        std::int64_t line;
    };
    struct Data {
        std::string text;
        std::vector<Brief> briefs;
        std::vector<KeyNumber> keys;
        std::vector<Where> wheres;
        Orders orders;
    };

    static void readTasks(Data&);
    std::string_view behindTheTitle(std::size_t task) const;
    TaskItem item(std::size_t task, std::string_view title) const;

    std::shared_ptr<const Data> data_;
};

// Some tasks of a list, in an order of their own, and others that are in no list any more.
class TaskSelection {
  public:
    TaskSelection() = default;
    TaskSelection(TaskList list, std::vector<Place> places) : list_(std::move(list)), places_(std::move(places)) {}

    std::size_t size() const { return places_.size(); }
    bool empty() const { return places_.empty(); }
    TaskItem operator[](std::size_t) const; // with a title to be drawn
    TaskIterator<TaskSelection> begin() const { return {*this, 0}; }
    TaskIterator<TaskSelection> end() const { return {*this, size()}; }

    const TaskList& list() const { return list_; }
    const Places& places() const { return places_; } // beyond the list for the others
    std::string_view title(std::size_t) const;
    KeyNumber key(std::size_t) const;
    std::int64_t line(std::size_t) const;
    TaskList::Brief brief(std::size_t) const;
    void insert(std::size_t at, TaskItem); // one that is not in the list
    void clear() { *this = {}; }
    // Of one and the same list: tasks of two readings are not compared, which takes long.
    bool operator==(const TaskSelection& other) const {
        return list_.sharesAllWith(other.list_) && places_ == other.places_ && others_ == other.others_;
    }

  private:
    const TaskItem* other(std::size_t) const;

    TaskList list_;
    std::vector<Place> places_; // from `others` down: of those that are in no list
    std::vector<TaskItem> others_;
};

}
