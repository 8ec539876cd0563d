#include "Tacla/MainWindow/Pages/RowHeights.h"

#include "DravelKit/DravelUI/Typography.h"
#include "Tacla/MainWindow/Rows/RowContents.h"
#include "Tacla/MainWindow/Rows/TaskRow.h"

#include <QFontMetricsF>

#include <algorithm>
#include <array>
#include <cmath>

namespace tacla {

namespace {

// Widths of ASCII letters; every other byte of UTF-8 counts as much as it can: two bytes make one wide letter.
class ByteWidths {
  public:
    ByteWidths() {
        const QFontMetricsF metrics(dravel::Theme::font(dravel::Theme::Typography::taskTitle));
        for (std::size_t byte = 0; byte < 128; ++byte)
            widths_[byte] = static_cast<float>(metrics.horizontalAdvance(QChar(static_cast<char16_t>(byte))));
        std::fill(widths_.begin() + 128, widths_.end(), static_cast<float>(metrics.maxWidth() / 4));
    }

    int lines(const std::string& text, int room) const {
        float width = 0;
        for (const char byte : text) width += widths_[static_cast<unsigned char>(byte)];
        return std::max(1, static_cast<int>(std::ceil(width / static_cast<float>(room))));
    }

  private:
    std::array<float, 256> widths_{};
};

}

std::vector<int> estimatedRowHeights(const TaskGroups& groups, int rowWidth) {
    const ByteWidths widths;
    const int room = TaskRow::titleWidth(rowWidth);
    std::vector<int> heights;
    for (const auto& group : groups)
        for (const auto& task : group.tasks)
            heights.push_back(TaskRow::heightOf(widths.lines(task.title, room), hasTags(task, group.showDay) ? 1 : 0));
    return heights;
}

}
