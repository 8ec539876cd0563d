#include "Tacla/MainWindow/MainWindow.h"

#include "DravelKit/Foundation/FileError.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/MainView.h"
#include "Tacla/Preferences/Preferences.h"

#include <QApplication>
#include <QCloseEvent>
#include <QScreen>
#include <QWindow>

namespace tacla {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr QSize firstContent{980, 720}, leastContent{820, 560};

}

MainWindow::MainWindow(AppModel& model, Preferences& preferences, const DesktopActions& actions, const dravel::Now& now)
    : model_(model), preferences_(preferences), view_(new MainView(model, actions, now)) {
    setObjectName(u"TaclaMain"_s);
    setWindowTitle(u"Tacla"_s);
    view_->setMinimumSize(leastContent);
    setCentralWidget(view_);
    sizeSettled_.setSingleShot(true);
    sizeSettled_.setInterval(500ms);
    connect(&sizeSettled_, &QTimer::timeout, this, &MainWindow::rememberSize);
}

// The size that the user left, else the content's first size, centred. The menu bar is there by now.
void MainWindow::takeFirstSize() {
    if (std::exchange(sized_, true)) return;
    const int menuHeight = menuWidget() ? menuWidget()->sizeHint().height() : 0;
    if (const auto last = preferences_.windowSize()) return resize(last->width, last->height);
    const auto free = screen()->availableGeometry();
    const QSize whole = QSize(firstContent.width(), firstContent.height() + menuHeight).boundedTo(free.size());
    setGeometry(QRect(free.center() - QPoint(whole.width(), whole.height()) / 2, whole));
}

void MainWindow::present(const std::string& activationToken) {
    takeFirstSize();
    if (!activationToken.empty()) qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activationToken));
    if (isMinimized()) setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow(); // on Wayland it takes the token
    qunsetenv("XDG_ACTIVATION_TOKEN");
    // Qt on X11 learns a tenth of a second late that a window which went has lost the focus. One that comes back before
    // gets no keys, since for Qt nothing changed: no other call tells it.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    if (QGuiApplication::focusWindow() == windowHandle()) QApplication::setActiveWindow(this);
    QT_WARNING_POP
}

// Closing only hides: the program lives on in the tray.
void MainWindow::closeEvent(QCloseEvent* event) {
    rememberSize();
    event->ignore();
    hide();
}

void MainWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    if (isVisible()) sizeSettled_.start();
}

void MainWindow::rememberSize() {
    sizeSettled_.stop();
    if (isMaximized() || isFullScreen()) return;
    const auto last = preferences_.windowSize();
    if (last && last->width == width() && last->height == height()) return;
    try {
        preferences_.setWindowSize({width(), height()});
    } catch (const dravel::FileError&) {
        // The next window opens in its first size: nothing to trouble the user with.
        return;
    }
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow()) return;
    model_.refreshPermissions();
    model_.reload();
}

}
