#include "Tacla/MainWindow/MainWindowController.h"

#include "DravelKit/DravelUI/Card.h"
#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/Foundation/FileError.h"
#include "Tacla/AppModel/AppModel.h"
#include "Tacla/MainWindow/MainView.h"
#include "Tacla/MainWindow/QtValues.h"
#include "Tacla/MainWindow/Rows/AddTaskCard.h"
#include "Tacla/Preferences/Preferences.h"

#include <QApplication>
#include <QBuffer>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QCursor>
#include <QEventLoop>
#include <QFile>
#include <QImageWriter>
#include <QKeyEvent>
#include <QLibraryInfo>
#include <QMainWindow>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <QVersionNumber>
#include <QWindow>

#include <cerrno>

namespace tacla {

namespace fs = std::filesystem;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using dravel::FileError;

namespace {

// The least size is asked of the desktop. As a tile, half of a small screen, the view folds, down to its own: GNOME
// tiles no window that needs more with the frame that programs draw there themselves.
constexpr QSize usualFrame{8, 40};
constexpr QSize firstContent{980, 720}, leastContent{820, 560}, leastTile = QSize{480, 360} - usualFrame;
constexpr int usualPanel = 56;

bool onWayland() { return QGuiApplication::platformName().startsWith(u"wayland"); }

QByteArray formatOf(const fs::path& path) {
    const auto ending = QByteArray::fromStdString(path.extension().string()).mid(1).toLower();
    return QImageWriter::supportedImageFormats().contains(ending) ? ending : QByteArray("png");
}

void bringForward(QWidget& window, const std::string& activationToken) {
    if (!activationToken.empty()) qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activationToken));
    window.show();
    window.raise();
    window.activateWindow(); // on Wayland it takes the token
    qunsetenv("XDG_ACTIVATION_TOKEN");
    // Qt on X11 learns a tenth of a second late that a window which went has lost the focus. One that comes back before
    // gets no keys, since for Qt nothing changed: no other call tells it.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    if (QGuiApplication::focusWindow() == window.windowHandle()) QApplication::setActiveWindow(&window);
    QT_WARNING_POP
}

void write(const QImage& image, const fs::path& path) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, formatOf(path).constData());
    QFile file(pathText(path));
    errno = 0;
    const bool written =
        file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size() && file.flush();
    if (!written) throw FileError(FileError::Kind::system, path, errno != 0 ? errno : EIO);
}

}

QSize roomForContent(QSize free, bool panelsKnown) {
    return free - usualFrame - QSize(0, panelsKnown ? 0 : usualPanel);
}

// Title, size and life of the window around the main view.
class MainWindow final : public QMainWindow {
  public:
    MainWindow(AppModel&, Preferences&, const DesktopActions&, const dravel::Now&);

    void present(const std::string& activationToken);
    MainView& view() { return *view_; }

  protected:
    void closeEvent(QCloseEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void moveEvent(QMoveEvent*) override;
    void changeEvent(QEvent*) override;

  private:
    void watch(QScreen*);
    void takePlace(bool chosen);
    void keepWithinScreen();
    QSize wantedSize() const;
    void comeForward(const std::string& activationToken);
    void rememberPlace();
    void renewFrame();

    AppModel& model_;
    Preferences& preferences_;
    MainView* view_;
    QTimer placeSettled_, activation_, screenSettled_;
    bool placed_ = false, frameIsOld_ = false;
};

MainWindow::MainWindow(AppModel& model, Preferences& preferences, const DesktopActions& actions, const dravel::Now& now)
    : model_(model), preferences_(preferences), view_(new MainView(model, actions, now)) {
    setObjectName(u"TaclaMain"_s);
    setWindowTitle(u"Tacla"_s);
    view_->setMinimumSize(leastTile);
    setCentralWidget(view_);
    placeSettled_.setSingleShot(true);
    placeSettled_.setInterval(500ms);
    connect(&placeSettled_, &QTimer::timeout, this, &MainWindow::rememberPlace);
    screenSettled_.setSingleShot(true);
    screenSettled_.setInterval(300ms);
    connect(&screenSettled_, &QTimer::timeout, this, &MainWindow::keepWithinScreen);
    for (auto* screen : QGuiApplication::screens()) watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, &MainWindow::watch);
    activation_.setSingleShot(true);
    activation_.setInterval(300ms);
    connect(&activation_, &QTimer::timeout, this, [this] {
        if (isVisible() && !isActiveWindow()) comeForward({});
    });
}

// A screen that is scaled, turned or replaced has less room at once; the desktop moves windows, but shrinks none.
void MainWindow::watch(QScreen* screen) {
    connect(screen, &QScreen::availableGeometryChanged, this, [this] { screenSettled_.start(); });
}

void MainWindow::keepWithinScreen() {
    if (!isVisible() || isMaximized() || isFullScreen() || isMinimized()) return;
    const auto room = roomForContent(screen()->availableGeometry().size(), !onWayland());
    if (size().boundedTo(room) != size()) takePlace(false);
}

// The size that the window has, or that the user left, else the first one.
QSize MainWindow::wantedSize() const {
    if (placed_) return size();
    if (const auto last = preferences_.windowSize()) return {last->width, last->height};
    const int menuHeight = menuWidget() ? menuWidget()->sizeHint().height() : 0; // it is there by now
    return {firstContent.width(), firstContent.height() + menuHeight};
}

// Screens come and go while the window is away: each time it fits into the one that it comes to. Where it stands is the
// desktop's choice on Wayland. Who chose its size saw the panels, too.
void MainWindow::takePlace(bool chosen) {
    const auto last = preferences_.windowPosition();
    QScreen* target = screen();
    if (last && !onWayland())
        if (auto* there = QGuiApplication::screenAt({last->x + 32, last->y + 16})) target = there;
    const auto free = target->availableGeometry();
    const QSize room = roomForContent(free.size(), chosen || !onWayland());
    const int menuHeight = menuWidget() ? menuWidget()->sizeHint().height() : 0;
    // A Wayland desktop that gives less than a window asks for would see it cut off.
    const QSize least = onWayland() ? leastTile : leastContent;
    setMinimumSize(QSize(least.width(), least.height() + menuHeight).boundedTo(room));
    const QSize fitting = wantedSize().boundedTo(room);
    if (!placed_ || fitting != size()) resize(fitting);
    if (onWayland()) return;
    const QRect within(free.topLeft(), free.size() - fitting - usualFrame);
    if (last)
        move(std::clamp(last->x, within.left(), std::max(within.left(), within.right() + 1)),
             std::clamp(last->y, within.top(), std::max(within.top(), within.bottom() + 1)));
    else if (!placed_)
        move(within.topLeft() + QPoint(within.width(), within.height()) / 2);
}

void MainWindow::present(const std::string& activationToken) {
    if (!isVisible() && !isMaximized() && !isFullScreen()) takePlace(placed_ || preferences_.windowSize());
    placed_ = true;
    comeForward(activationToken);
    // A desktop may refuse the token, or may just be taking the focus away.
    if (onWayland()) activation_.start();
    view_->readyToType();
}

void MainWindow::comeForward(const std::string& activationToken) {
    // Without a token no Wayland desktop raises a window that is there, but each gives the focus to one that is new.
    if (onWayland() && activationToken.empty() && isVisible() && !isActiveWindow()) hide();
    if (isMinimized()) setWindowState(windowState() & ~Qt::WindowMinimized);
    bringForward(*this, activationToken);
}

// Closing only hides: the program lives on in the tray.
void MainWindow::closeEvent(QCloseEvent* event) {
    rememberPlace();
    event->ignore();
    hide();
    view_->closed();
}

void MainWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    if (isVisible()) placeSettled_.start();
}

void MainWindow::moveEvent(QMoveEvent* event) {
    QMainWindow::moveEvent(event);
    if (isVisible() && !onWayland()) placeSettled_.start();
}

void MainWindow::rememberPlace() {
    placeSettled_.stop();
    if (!isVisible() || isMaximized() || isFullScreen() || isMinimized()) return;
    std::optional<Preferences::Position> position;
    if (!onWayland()) position = {x(), y()};
    const auto last = preferences_.windowSize();
    const bool same = last && last->width == width() && last->height == height();
    if (same && (!position || position == preferences_.windowPosition())) return;
    try {
        preferences_.setWindow({width(), height()}, position);
    } catch (const dravel::FileError&) {
        // The next window opens in its first size: nothing to trouble the user with.
        return;
    }
}

// Where the desktop leaves the frame to Qt, that of before Qt 6.7 keeps the colours of the moment when it was made.
// Made anew it comes to the front: not while the user is elsewhere.
void MainWindow::renewFrame() {
    if (!std::exchange(frameIsOld_, false) || !windowHandle() || windowHandle()->frameMargins().isNull()) return;
    const bool shown = isVisible();
    hide();
    windowHandle()->destroy();
    if (shown) show();
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    const bool coloured = event->type() == QEvent::PaletteChange;
    if (coloured && onWayland() && windowHandle() && windowHandle()->handle())
        frameIsOld_ = QLibraryInfo::version() < QVersionNumber(6, 7);
    if (frameIsOld_ && (isActiveWindow() || !isVisible()))
        QMetaObject::invokeMethod(this, &MainWindow::renewFrame, Qt::QueuedConnection);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow()) return;
    activation_.stop(); // it came; whoever goes elsewhere now wants to
    model_.permission().refresh();
    model_.list().read();
}

// The add card alone.
class QuickEntry final : public dravel::CardStage {
  public:
    QuickEntry(AppModel&, const dravel::Now&);
    void present(const std::string& activationToken);

  protected:
    bool event(QEvent*) override;
    void keyPressEvent(QKeyEvent*) override;
    void hideEvent(QHideEvent*) override;

  private:
    static constexpr int panelWidth = 760, frame = 12;

    const dravel::Now& now_;
    AddTaskCard* card_;
};

QuickEntry::QuickEntry(AppModel& model, const dravel::Now& now) : now_(now), card_(new AddTaskCard(model, now_, this)) {
    setObjectName(u"quickEntry"_s);
    setWindowTitle(u"Ajouter une tâche"_s);
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(frame, frame, frame, frame);
    column->addWidget(card_);
    connect(card_, &AddTaskCard::added, this, [this](bool more) {
        if (!more) hide();
    });
}

// As high as the card, whose foot moves when something is offered.
bool QuickEntry::event(QEvent* event) {
    const bool done = CardStage::event(event);
    if (event->type() == QEvent::LayoutRequest) resize(panelWidth, layout()->heightForWidth(panelWidth));
    return done;
}

void QuickEntry::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape) return CardStage::keyPressEvent(event);
    hide(); // the words stay for the next time
}

void QuickEntry::hideEvent(QHideEvent* event) {
    CardStage::hideEvent(event);
    if (card_->isEmpty()) card_->forgetDay();
}

void QuickEntry::present(const std::string& activationToken) {
    card_->setToday(Day::of(now_()));
    resize(panelWidth, layout()->heightForWidth(panelWidth));
    const auto* here = QGuiApplication::screenAt(QCursor::pos());
    const auto free = (here ? here : screen())->availableGeometry();
    if (!isVisible()) move(free.center().x() - panelWidth / 2, free.top() + free.height() / 4);
    bringForward(*this, activationToken);
    card_->focusTitle();
}

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

void MainWindowController::showQuickEntry(const std::string& activationToken) {
    if (!quickEntry_) quickEntry_ = std::make_unique<QuickEntry>(model_, now_);
    quickEntry_->present(activationToken);
}

void MainWindowController::copyTask() {
    if (window_) window_->view().copyTask();
}

void MainWindowController::beginTask() { made().view().beginTask(); }

void MainWindowController::showTask(const std::string& key) { made().view().showTask(key); }

void MainWindowController::close() {
    if (window_) window_->close();
}

bool MainWindowController::isShown() const { return window_ && window_->isVisible(); }

void MainWindowController::headlessSnapshot(AppModel& passive, const DesktopActions& actions, const dravel::Now& now,
                                            const fs::path& path, const Snapshot& wanted) {
    dravel::setAppearance(wanted.dark ? dravel::Appearance::dark : dravel::Appearance::light);
    MainView view(passive, actions, now);
    view.setAttribute(Qt::WA_DontShowOnScreen);
    view.select(wanted.section);
    view.resize(wanted.width, wanted.height);
    view.show();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); // lays everything out
    QImage image(view.size() * wanted.scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(wanted.scale);
    view.render(&image);
    write(image, path);
}

}
