#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// A task's key, before it is written out: what its title hashes to, and which of the tasks of that title it is.
namespace tacla {

// Bytes of the text for each task, of a usual file: for what is reserved, and grows when it is not enough.
inline constexpr std::size_t usualTaskLength = 48;

struct TaskKey {
    std::uint64_t digest; // the first 8 bytes of the SHA-256 digest of the title in lower case, without its "❗"
    int nth;              // from 1, in file order

    bool operator==(const TaskKey&) const = default;
};

std::string_view withoutStrongMark(std::string_view title);
std::uint64_t titleDigest(std::string_view title);

// The 16 hexadecimal digits. The title is asked for the second and later tasks of one title only.
std::string written(TaskKey, std::string_view title);

// A task of a text by its line, and its key.
struct KeyedTitle {
    std::int64_t line;
    std::string_view title;
    TaskKey key;
};
std::vector<KeyedTitle> keyedTitles(std::string_view text);

// Old key to new key of every line whose task has another key afterwards. Both in line order.
std::map<std::string, std::string> changedKeys(const std::vector<KeyedTitle>& before,
                                               const std::vector<KeyedTitle>& after);

// Numbers the tasks of each title as they come. A flat table of digests, as small as can be: on a long list, reaching
// into memory for each title costs more than hashing it.
class TaskCounter {
  public:
    explicit TaskCounter(std::size_t expectedTasks);
    TaskKey next(std::uint64_t digest);

    // Brings the place of a digest near, which is to be counted a few tasks later.
    void expect(std::uint64_t digest) const { __builtin_prefetch(&slots_[digest & (slots_.size() - 1)], 1); }
    static constexpr std::size_t lead = 12; // that many tasks

  private:
    std::vector<std::uint64_t> slots_; // a power of two, never full; 0 is free
    std::size_t used_ = 0;
    std::unordered_map<std::uint64_t, int> repeated_; // of titles that came again, and of the digest 0

    bool insert(std::uint64_t digest); // true when it is new
    void grow();
};

}
