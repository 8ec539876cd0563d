#include "Tacla/MainWindow/MainWindowController.h"

#include "Tacla/MainWindow/MainView.h"
#include "Tacla/MainWindow/MainWindow.h"

namespace tacla {

MainWindowController::MainWindowController(AppModel& model, Preferences& preferences, DesktopActions actions,
                                           dravel::Now now)
    : model_(model), preferences_(preferences), actions_(std::move(actions)), now_(std::move(now)) {}

MainWindowController::~MainWindowController() = default;

MainWindow& MainWindowController::made() {
    if (!window_) window_ = std::make_unique<MainWindow>(model_, preferences_, actions_, now_);
    return *window_;
}

QMainWindow& MainWindowController::window() { return made(); }

void MainWindowController::show(const std::string& activationToken) { made().present(activationToken); }

void MainWindowController::beginTask() { made().view().beginTask(); }

void MainWindowController::close() {
    if (window_) window_->close();
}

bool MainWindowController::isShown() const { return window_ && window_->isVisible(); }

}
