#pragma once

#include "Tacla/Linux/Portal.h"

#include <filesystem>
#include <functional>
#include <string>

class QWidget;

// Opening files, addresses and panels as freedesktop.org's desktops do: through the portal, where one offers it, else
// as programs did before there were portals. Nothing here blocks. The portal outlives every answer.
namespace tacla::FreedesktopActions {

using Path = std::filesystem::path;

void openFile(const Path&); // with the user's program for it

// In the browser. It says nothing on standard error: the address may be for the user's eyes only. `failed` is called
// when there is no browser, at once or later.
void openAddress(Portal&, const std::string& url, const std::function<void()>& failed = {});

void reveal(Portal&, const Path&);     // in the file manager
void showFolder(Portal&, const Path&); // made, where nothing was put into it yet
void openNotificationSettings();

// A file panel over the parent, opened in the folder; `chosen` is called unless the user cancels.
using Chosen = std::function<void(const Path&)>;
void chooseFile(Portal&, QWidget* parent, const Path& folder, const Chosen&); // an existing list
void createFile(Portal&, QWidget* parent, const Path& folder, const Chosen&); // the name of a new one
void chooseClient(Portal&, QWidget* parent, const Chosen&);                   // the client file that Google gave

}
