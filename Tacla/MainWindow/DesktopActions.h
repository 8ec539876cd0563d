#pragma once

#include <filesystem>
#include <functional>
#include <string>

class QWidget;

namespace tacla {

// What the window asks of the desktop around it. Nothing here blocks: a dialog tells its answer later.
struct DesktopActions {
    using Path = std::filesystem::path;

    std::function<void(const Path&)> openFile; // in the user's editor
    std::function<void(const Path&)> reveal;   // in the file manager
    std::function<void()> showCopies;          // the folder of the list's copies, in the file manager
    std::function<void()> openAgenda;          // Google Calendar, in the browser
    std::function<void()> openGuide;           // how to mirror into Google Calendar
    std::function<void()> openNotificationSettings;

    // A file panel over the parent, opened in the folder; `chosen` is called unless the user cancels.
    using Chosen = std::function<void(const Path&)>;
    std::function<void(QWidget* parent, const Path& folder, Chosen)> chooseFile; // an existing Markdown or text file
    std::function<void(QWidget* parent, const Path& folder, Chosen)> createFile; // the name of a new list

    std::function<void(QWidget* parent, Chosen)> chooseClient; // the downloaded client file

    std::function<void(QWidget* parent)> chooseQuickEntryKey; // the desktop asks the user

    std::function<void()> checkForUpdates; // empty: no updates are offered

    std::string version; // "1.0"
    Path home;           // the user's home folder
};

}
