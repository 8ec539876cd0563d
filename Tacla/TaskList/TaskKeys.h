#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

// The identity of tasks: what a title hashes to, in lower case and without its "❗", and which of the tasks of that
// title it is. Spelt out as 16 hexadecimal digits; as a number where there are many.
namespace tacla {

using KeyNumber = std::uint64_t;

std::string_view withoutStrongMark(std::string_view title);
std::string foldedTitle(std::string_view title);
KeyNumber shortDigest(std::string_view text);
inline KeyNumber titleDigest(std::string_view title) { return shortDigest(foldedTitle(title)); }

std::string keyText(KeyNumber);
std::optional<KeyNumber> keyNumber(std::string_view key); // none for what is no key

// A key before it is reckoned: the digest of the title, and which of the tasks of that title it is, from 1 and in file
// order.
struct TaskKey {
    KeyNumber digest;
    std::uint32_t number;

    KeyNumber of(std::string_view title) const; // which is asked for the second and later tasks of one title only
    bool operator==(const TaskKey&) const = default;
};

// A few keys that are looked for among many others.
class KeySet {
  public:
    void insert(KeyNumber key) {
        near_.set(key % near_.size());
        keys_.insert(key);
    }
    bool contains(KeyNumber key) const { return near_[key % near_.size()] && keys_.contains(key); }

  private:
    std::bitset<1 << 15> near_; // stays in the processor's nearest memory
    std::unordered_set<KeyNumber> keys_;
};

// The keys of a list, from the digests of its titles in file order.
class KeyNumbers {
  public:
    explicit KeyNumbers(std::vector<KeyNumber> digests);

    KeyNumber key(std::size_t task, std::string_view title) const {
        return TaskKey{digests_[task], numbers_[task]}.of(title);
    }
    bool isAlone(std::size_t task) const; // no other task has its title

  private:
    std::vector<KeyNumber> digests_, shared_; // those that several tasks have, in order
    std::vector<std::uint32_t> numbers_;
};

}
