#include "Tacla/TaskList/TaskKeys.h"

#include "DravelKit/Foundation/Hash.h"
#include "DravelKit/Foundation/Text.h"
#include "Tacla/TaskList/Numbering.h"
#include "Tacla/TaskList/TaskLines.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace tacla {

static constexpr std::size_t keyLength = 16;

std::string_view withoutStrongMark(std::string_view title) {
    while (title.starts_with(strongMark)) title.remove_prefix(strongMark.size());
    return dravel::trimmedOfWhiteSpaceAndLineBreaks(title);
}

std::string foldedTitle(std::string_view title) { return dravel::lowerCased(withoutStrongMark(title)); }

KeyNumber shortDigest(std::string_view text) {
    const auto digest = dravel::sha256(text);
    KeyNumber value = 0;
    for (std::size_t i = 0; i < 8; ++i) value = value << 8 | digest[i];
    return value;
}

std::string keyText(KeyNumber value) {
    std::string text(keyLength, '0');
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit, value >>= 4)
        *digit = "0123456789abcdef"[value & 15];
    return text;
}

std::optional<KeyNumber> keyNumber(std::string_view key) {
    KeyNumber value = 0;
    const auto read = std::from_chars(key.data(), key.data() + key.size(), value, 16);
    const bool isKey = key.size() == keyLength && read.ec == std::errc() && read.ptr == key.data() + key.size();
    return isKey && keyText(value) == key ? std::optional(value) : std::nullopt; // not in capitals
}

KeyNumber TaskKey::of(std::string_view title) const {
    return number == 1 ? digest : shortDigest(foldedTitle(title) + "#" + std::to_string(number));
}

KeyNumbers::KeyNumbers(std::vector<KeyNumber> digests) : digests_(std::move(digests)), numbers_(numbered(digests_)) {
    for (std::size_t i = 0; i < digests_.size(); ++i)
        if (numbers_[i] == 2) shared_.push_back(digests_[i]);
    std::ranges::sort(shared_);
}

bool KeyNumbers::isAlone(std::size_t task) const {
    return shared_.empty() || !std::ranges::binary_search(shared_, digests_[task]);
}

}
