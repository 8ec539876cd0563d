#pragma once

#include "DravelKit/Foundation/Instant.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/DesktopActions.h"
#include "Tacla/MainWindow/PageContents.h"

#include <filesystem>

namespace tacla {

// A picture of the window's content, drawn without showing it. Needs a QApplication, with the offscreen platform where
// there is no display.
struct Snapshot {
    bool dark = false;
    Section section = Section::today;
    int width = 980, height = 720;
    double scale = 1;
};

// Writes PNG, or the format that the path's ending names. The model is one that only reloaded. Throws
// dravel::FileError.
void saveSnapshot(AppModel& passive, const DesktopActions&, const std::filesystem::path&, const Snapshot& = {},
                  const dravel::Now& = dravel::systemNow);

}
