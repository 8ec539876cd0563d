#pragma once

#include "Tacla/Linux/Bus.h"

#include <filesystem>
#include <functional>
#include <string>

class QWidget;

// Opening files, addresses and panels as freedesktop.org's desktops do. Nothing here blocks.
namespace tacla::FreedesktopActions {

using Path = std::filesystem::path;

void openFile(const Path&); // with the user's program for it

// In the browser. It says nothing on standard error: the address may be for the user's eyes only. `failed` is called
// when there is no browser, at once or later.
void openAddress(const std::string& url, const std::function<void()>& failed = {});

void reveal(Bus& session, const Path&); // in the file manager; the bus outlives the answer
void showFolder(const Path&);           // made, where nothing was put into it yet
void openNotificationSettings();

// A file panel over the parent, opened in the folder; `chosen` is called unless the user cancels.
using Chosen = std::function<void(const Path&)>;
void chooseFile(QWidget* parent, const Path& folder, const Chosen&); // an existing list
void createFile(QWidget* parent, const Path& folder, const Chosen&); // the name of a new one
void chooseClient(QWidget* parent, const Chosen&);                   // the client file that Google gave

}
