#include "Tacla/MainWindow/MainWindowController.h"
#include "tests/MainWindow/TestWindow.h"

#include <QImage>
#include <QLayout>
#include <QMainWindow>
#include <QScreen>

namespace tacla::testing {

TEST(MainView, GoesToASectionThatIsRequestedWhileItIsThere) {
    ModelWorld world("2026-11-24 10:40", "");
    world.model.requestSection("settings");
    const MainView view(world.model, {}, [&] { return world.loop.now(); });
    EXPECT_EQ(view.findChild<QWidget*>(u"page.settings"_s), nullptr) << "requested before";
    world.model.requestSection("settings");
    EXPECT_NE(view.findChild<QWidget*>(u"page.settings"_s), nullptr) << "the same request, made again";
    world.model.requestSection("ailleurs");
    EXPECT_EQ(world.state().requestedSection, "ailleurs") << "left in place";
}

TEST(UndoBar, OffersToTakeTheLastChangeBack) {
    const std::string pain = "- [ ] Pain · 2026-11-24\n";
    TestWindow window(pain);
    EXPECT_FALSE(window.shows("toast"));
    window.focus("Pain");
    window.press(Qt::Key_Space);
    EXPECT_EQ(window.focused(), "Pain check") << "the bar leaves the focus alone";
    EXPECT_GE(window.page(Section::settings).widget()->layout()->contentsMargins().bottom(),
              window.control<QWidget>("toast").height())
        << "the page scrolls past it";
    window.click("toastAction");
    EXPECT_EQ(window.world.text(), pain);
    EXPECT_FALSE(window.shows("toast"));
}

TEST(MainWindow, HidesWhenClosedAndComesBackAsItWas) {
    LivingWorld world("2026-11-24 10:40", "- [ ] Pain · 2026-11-24\n");
    MainWindowController controller(world.model, world.preferences, {}, [&] { return world.loop.now(); });
    EXPECT_FALSE(controller.isShown());
    controller.show();
    EXPECT_TRUE(controller.isShown());
    auto& window = controller.window();
    world.model.requestSection("late");
    window.resize(1000, 800);
    window.close();
    EXPECT_FALSE(controller.isShown());
    EXPECT_EQ(world.preferences.windowSize()->width, 1000);
    EXPECT_EQ(world.preferences.windowPosition(), (Preferences::Position{window.x(), window.y()}));

    world.save("- [ ] Pain · 2026-11-24\n- [ ] Vin · 2026-11-24\n");
    controller.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_EQ(&controller.window(), &window);
    EXPECT_TRUE(window.findChild<QWidget*>(u"page.late"_s)->isVisible());
    EXPECT_EQ(world.state().tasks.size(), 2u) << "read again when the user comes back";
}

TEST(MainWindow, FitsIntoTheScreenThatItComesTo) {
    for (const auto& [free, panelsKnown, room] : {std::tuple{QSize(1366, 720), true, QSize(1358, 680)},
                                                  {QSize(1366, 768), false, QSize(1358, 672)},
                                                  {QSize(1280, 720), false, QSize(1272, 624)},
                                                  {QSize(1024, 600), false, QSize(1016, 504)}})
        EXPECT_EQ(roomForContent(free, panelsKnown), room);
    LivingWorld world("2026-11-24 10:40", "");
    world.preferences.setWindow({3000, 2000}, Preferences::Position{2500, 1900}); // of a larger screen, which is gone
    MainWindowController controller(world.model, world.preferences, {}, [&] { return world.loop.now(); });
    controller.show();
    const QRect free = controller.window().screen()->availableGeometry();
    EXPECT_TRUE(free.contains(controller.window().geometry())) << "with room for a title bar";
    EXPECT_LT(controller.window().height(), free.height());
}

TEST(HeadlessSnapshot, DrawsTheWindowInItsAppearanceAndScale) {
    ModelWorld world("2026-11-24 10:40", "- [ ] Pain · 2026-11-24\n");
    world.list().read();
    const TemporaryFolder folder;
    const auto picture = [&](const Snapshot& wanted) {
        MainWindowController::headlessSnapshot(
            world.model, {}, [&] { return world.loop.now(); }, folder / "a.png", wanted);
        return QImage(QString::fromStdString(folder / "a.png"));
    };
    const QImage light = picture({}), dark = picture({.dark = true, .scale = 2});
    EXPECT_EQ(light.size(), QSize(980, 720));
    EXPECT_EQ(light.pixelColor(500, 5), QColor(0xF5, 0xF5, 0xF5));
    EXPECT_EQ(dark.size(), QSize(1960, 1440));
    EXPECT_EQ(dark.pixelColor(1000, 10), QColor(0x13, 0x19, 0x27));
}

}
