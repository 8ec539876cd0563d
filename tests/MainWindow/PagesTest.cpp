#include "Tacla/TaskList/TaskFile.h"
#include "tests/MainWindow/TestWindow.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/Fields.h"
#include "DravelKit/DravelUI/SettingsCard.h"
#include "DravelKit/DravelUI/TextField.h"
#include "DravelKit/DravelUI/TextLabel.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QTest>

#include <gtest/gtest.h>

namespace tacla {
namespace {

using namespace Qt::StringLiterals;
using dravel::Button;
using testing::TestWindow;

// Every text that shows in a part of the window, top to bottom.
std::string texts(const QWidget& part) {
    std::string all;
    for (const auto* label : part.findChildren<dravel::TextLabel*>())
        if (label->isVisible() && !label->text().isEmpty()) all += label->text().toStdString() + "\n";
    return all;
}

TEST(AddCard, AddsToTheChosenDayAndIsReadyForTheNext) {
    TestWindow window("");
    auto& title = window.control<dravel::TextField>("add.title");
    title.setText(u"  Appeler la banque "_s);
    QTest::mouseClick(&window.control<QWidget>("add.tomorrow"), Qt::LeftButton);
    window.control<dravel::Switch>("add.hasTime").click();
    window.control<dravel::Switch>("add.strong").click();
    window.control<Button>("add.button").click();
    EXPECT_EQ(window.focused(), "add.title");
    QTest::keyClicks(&title, u"Relancer"_s);
    window.press(Qt::Key_Return);
    EXPECT_EQ(window.world.text(), "- [ ] ❗ Appeler la banque · 2026-11-25 10:00\n- [ ] Relancer · 2026-11-25\n")
        << "the day stays, time and priority do not";
    EXPECT_FALSE(title.isUndoAvailable()) << "what was added is the list's to take back";
    QTest::keyClicks(&title, u"   "_s);
    window.press(Qt::Key_Return);
    EXPECT_EQ(title.text(), QString());
    EXPECT_EQ(window.world.state().tasks.size(), 2u) << "blanks are no title";
}

TEST(AddCard, OffersTheMomentThatTheTitleTells) {
    TestWindow window("");
    auto& title = window.control<dravel::TextField>("add.title");
    auto& offer = window.control<dravel::Offer>("add.offer");
    title.setFocus();
    QTest::keyClicks(&title, u"Appeler Paul demain 14:30 prioritaire"_s);
    window.settle();
    EXPECT_TRUE(offer.isVisible());
    EXPECT_EQ(offer.text().toStdString(), "demain 14:30 · prioritaire");
    window.press(Qt::Key_Tab);
    EXPECT_EQ(title.text().toStdString(), "Appeler Paul");
    EXPECT_EQ(window.focused(), "add.title");
    EXPECT_FALSE(offer.isVisible());
    window.press(Qt::Key_Return);
    const std::string paul = "- [ ] ❗ Appeler Paul · 2026-11-25 14:30\n", date = "- [ ] Pain demain · 2026-11-24\n";
    EXPECT_EQ(window.world.text(), paul);
    QTest::keyClicks(&title, u"Pain demain"_s);
    window.press(Qt::Key_Return);
    EXPECT_EQ(window.world.text(), paul + date) << "as typed, on the day before the words; nothing changes unasked";
    QTest::keyClicks(&title, u"Vin ce soir"_s);
    QTest::mouseClick(&offer, Qt::LeftButton);
    title.undo();
    EXPECT_EQ(title.text().toStdString(), "Vin ce soir");
    EXPECT_TRUE(offer.isVisible());
}

// A title, then the date, the time and the priority without a mouse: 14 keys.
TEST(AddCard, TakesEverythingByKeys) {
    TestWindow window("");
    window.control<dravel::TextField>("add.title").setFocus();
    const auto type = [&](const char* keys) {
        for (const char* key = keys; *key != '\0'; ++key) QTest::keyClick(QApplication::focusWidget(), *key);
    };
    for (const auto& [day, time, line] : {std::tuple{"22/12", "1430", "2026-12-22 14:30"},
                                          {"3/2", "9h5", "2027-02-03 09:05"},
                                          {"240128", "930", "2028-01-24 09:30"},
                                          {"31/12/26", "7", "2026-12-31 07:00"}}) {
        type("Pain");
        window.press(Qt::Key_Tab);
        EXPECT_EQ(window.focused(), "add.date");
        type(day);
        window.press(Qt::Key_Tab);
        type(time);
        EXPECT_EQ(window.focused(), "add.time");
        window.press(Qt::Key_Tab);
        window.press(Qt::Key_Space);
        window.press(Qt::Key_Return);
        EXPECT_EQ(window.world.state().tasks.back().title, "❗ Pain");
        EXPECT_EQ(window.world.state().tasks.back().when(), line);
        EXPECT_EQ(window.focused(), "add.title");
    }
}

TEST(AddCard, KeepsWhatWasTypedUntilItIsInTheFile) {
    TestWindow window("");
    auto& title = window.control<dravel::TextField>("add.title");
    QApplication::clipboard()->setText(u"Pain\u0085Vin"_s);
    title.paste();
    EXPECT_EQ(title.text().toStdString(), "Pain Vin");
    std::filesystem::remove(window.world.file);
    std::filesystem::create_directory(window.world.file);
    window.control<Button>("add.button").click();
    EXPECT_EQ(title.text().toStdString(), "Pain Vin");
    auto& reason = window.control<dravel::TextLabel>("add.reason");
    EXPECT_TRUE(reason.isVisible());
    EXPECT_EQ(reason.text().toStdString(), window.world.state().fileError.value_or("none"));
    std::filesystem::remove(window.world.file);
    testing::writeBytes(window.world.file, "");
    window.control<Button>("add.button").click();
    EXPECT_EQ(window.world.text(), "- [ ] Pain Vin · 2026-11-24\n");
    EXPECT_EQ(title.text(), QString());
    EXPECT_FALSE(reason.isVisible());
}

TEST(AddCard, MakesSeveralTasksOfSeveralLinesWhenAsked) {
    TestWindow window("");
    auto& title = window.control<dravel::TextField>("add.title");
    QApplication::clipboard()->setText(
        u"# Courses\r\n- Pain\n\n- [x] ❗ Vin · 2026-12-24 18:00 · ✅ 2026-11-20\nSel\n"_s);
    title.paste();
    title.setFocus();
    EXPECT_EQ(window.control<dravel::Offer>("add.offer").text().toStdString(), "Ajouter 3 tâches ?");
    window.press(Qt::Key_Tab);
    EXPECT_EQ(window.world.text(), "- [ ] Pain · 2026-11-24\n- [ ] ❗ Vin · 2026-12-24 18:00\n- [ ] Sel · 2026-11-24\n");
    EXPECT_EQ(title.text(), QString());
    window.world.list().undo();
    EXPECT_EQ(window.world.text(), "") << "one edit";
}

TEST(LatePage, PostponesAllAtOnce) {
    TestWindow window(
        "- [ ] Pain · 2026-11-20 08:00\n- [ ] Vin · 2026-11-21 · due 2026-11-01\n- [ ] Sel · 2026-11-25\n");
    const auto before = window.world.text();
    window.press(Qt::Key_R, Qt::ControlModifier);
    auto& menu = window.control<QMenu>("postponeAll.menu");
    QTest::keyClick(&menu, Qt::Key_D);
    window.settle();
    EXPECT_EQ(window.world.text(), "- [ ] Pain · 2026-11-25 08:00 · due 2026-11-20\n"
                                   "- [ ] Vin · 2026-11-25 · due 2026-11-01\n- [ ] Sel · 2026-11-25\n");
    window.world.list().undo();
    EXPECT_EQ(window.world.text(), before) << "one edit";
}

TEST(FindPage, FindsInAllTasksAndGivesThePageBack) {
    TestWindow window("- [x] Été indien · 2026-11-20\n- [ ] Thé d'été · 2026-11-30\n- [ ] Pain · 2026-11-24\n");
    window.focus("Pain");
    window.press(Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(window.focused(), "find.words");
    QTest::keyClicks(QApplication::focusWidget(), u"ete"_s);
    window.settle();
    EXPECT_EQ(window.shown(), "Thé d'été [30/11]\nÉté indien [20/11]\n");
    window.press(Qt::Key_Down);
    window.press(Qt::Key_Space);
    EXPECT_EQ(window.world.state().tasks.at(1).done, true) << "rows act as everywhere";
    window.press(Qt::Key_Escape);
    EXPECT_EQ(window.page().objectName(), u"page.today"_s);
    EXPECT_EQ(window.focused(), "Pain check");
    for (const auto* way : {"find.open", "section.today"})
        QTest::mouseClick(&window.control<QWidget>(way), Qt::LeftButton);
    EXPECT_EQ(window.page().objectName(), u"page.today"_s) << "with the pointer alone";
}

TEST(AddCard, MovesWithTheDayAtMidnight) {
    TestWindow window("- [ ] Pain · 2026-11-24\n", "2026-11-24 23:59");
    EXPECT_EQ(window.control<dravel::DateField>("add.date").date(), QDate(2026, 11, 24));
    window.world.loop.advance(std::chrono::minutes(2));
    window.settle();
    EXPECT_EQ(window.control<dravel::DateField>("add.date").date(), QDate(2026, 11, 25));
    EXPECT_EQ(window.control<dravel::TextLabel>("hero.overline").text().toStdString(),
              "Aujourd'hui · mercredi 25 novembre");
    EXPECT_EQ(window.shown(), "Pain [24/11]\n");

    QTest::mouseClick(&window.control<QWidget>("add.tomorrow"), Qt::LeftButton);
    EXPECT_EQ(window.control<dravel::DateField>("add.date").date(), QDate(2026, 11, 26));
    window.world.loop.advance(std::chrono::hours(24));
    window.settle();
    EXPECT_EQ(window.control<dravel::DateField>("add.date").date(), QDate(2026, 11, 26)) << "picked by the user";
    window.world.loop.advance(std::chrono::hours(24));
    window.settle();
    EXPECT_EQ(window.control<dravel::DateField>("add.date").date(), QDate(2026, 11, 27)) << "not a day that is past";
}

TEST(Pages, OfferToConvertALineEndThatHidesADate) {
    const std::string tasks = "- [ ] Pain · 2026-11-24\r\n";
    TestWindow window(tasks);
    const auto problem = texts(window.control<QWidget>("problems"));
    EXPECT_NE(problem.find("1 ligne finit par un retour chariot : sa date n'est pas lue"), std::string::npos)
        << problem;
    EXPECT_EQ(window.shown(), "");
    window.control<Button>("problem.lineEnds").click();
    window.settle();
    EXPECT_FALSE(window.control<QWidget>("problems").isVisible());
    EXPECT_EQ(window.world.text(), "- [ ] Pain · 2026-11-24\n");
    window.world.list().undo();
    EXPECT_EQ(window.world.text(), tasks);
}

TEST(SettingsPage, LooksAtACopyAndBringsItBack) {
    TestWindow window("- [ ] Pain\n");
    window.world.list().toggle(window.world.task("Pain"));
    window.page(Section::settings);
    const auto choose = [&](int action) {
        window.control<Button>("copies.bringBack").click();
        auto& menu = window.control<QMenu>("copies");
        EXPECT_EQ(menu.actions().at(0)->text(), u"Aujourd'hui à 10:40"_s);
        menu.actions().at(0)->menu()->actions().at(action)->trigger();
        menu.close();
        window.settle();
    };
    choose(0);
    EXPECT_TRUE(window.asked.at(0).starts_with("open 2026-11-24 10h40m00s ")) << window.asked.at(0);
    testing::writeBytes(window.world.file, "- [ ] Lait\n"); // since the list was last looked at
    choose(1);
    EXPECT_EQ(window.world.text(), "- [ ] Lait\n");
    choose(1);
    EXPECT_EQ(window.world.text(), "- [ ] Pain\n");
    window.world.list().undo();
    EXPECT_EQ(window.world.text(), "- [ ] Lait\n");
}

TEST(SettingsPage, AsksTheDesktopAndFollowsItsAnswers) {
    TestWindow window("");
    auto& page = window.page(Section::settings);
    EXPECT_NE(texts(page).find("/home/camille/.local/bin/tacla\ntacla list · tacla done <texte> · tacla sync"),
              std::string::npos);
    for (const char* button : {"file.open", "file.reveal", "change.choose"}) window.control<Button>(button).click();
    EXPECT_EQ(window.world.state().file, window.world.file) << "cancelled";
    window.chosen = window.world.folder / "autre.md";
    window.control<Button>("change.create").click();
    EXPECT_EQ(window.asked, (std::vector<std::string>{"open taches.md", "reveal taches.md", "choose", "create"}));
    EXPECT_NE(texts(page).find(window.chosen.string()), std::string::npos) << texts(page);
    EXPECT_EQ(testing::readBytes(window.chosen), TaskFile::newFileText);

    window.control<dravel::Switch>("login.switch").click();
    EXPECT_TRUE(window.world.loginItem.enabled);
    window.world.loginItem.failure.emplace(dravel::FileError::Kind::system, "/autostart", EACCES);
    window.control<dravel::Switch>("login.switch").click();
    EXPECT_TRUE(window.control<dravel::Switch>("login.switch").isChecked()) << "the desktop refused";
}

TEST(SettingsPage, FollowsTheAccount) {
    TestWindow window("");
    window.world.calendar.present = Connection::signedOut;
    auto& page = window.page(Section::settings);
    window.control<Button>("account.signOut").click();
    window.world.loop.runPosted();
    window.world.calendar.clientFile = dravel::OAuthClient::Source::missing;
    window.world.list().read();
    window.settle();
    EXPECT_FALSE(window.control<Button>("account.signIn").isVisible());
    EXPECT_NE(texts(page).find("fichier client, gratuit"), std::string::npos) << texts(page);
    window.control<Button>("account.guide").click();
    window.chosen = "/tmp/photo.png";
    window.world.calendar.failure = "Client Google illisible";
    window.control<Button>("client.choose").click();
    window.settle();
    EXPECT_NE(texts(page).find("Client Google illisible\n"), std::string::npos);
    window.world.calendar.failure.reset();
    window.chosen = "/tmp/client_secret_1.json";
    window.control<Button>("client.choose").click();
    window.settle();
    EXPECT_EQ(texts(page).find("Client Google illisible\n"), std::string::npos);
    EXPECT_TRUE(window.control<Button>("account.signIn").isVisible());
    EXPECT_EQ(window.asked, (std::vector<std::string>{"guide", "client", "client"}));
    window.world.calendar.clientFile = dravel::OAuthClient::Source::package;
    window.world.list().read();
    window.settle();
    EXPECT_FALSE(window.control<Button>("client.choose").isVisible()) << "the maker's own";
}

TEST(SettingsPage, LetsTheUserLeaveTheSignIn) {
    TestWindow window("");
    auto& world = window.world;
    auto& page = window.page(Section::settings);
    world.mirror(MirrorEvent::Kind::signOutAsked);
    world.loop.runPosted();
    bool stopped = false;
    world.calendar.duringSignIn = [&](const auto&, const auto& stop) {
        stopped = stop.stop_requested();
        if (stopped) throw std::runtime_error("Connexion Google interrompue");
    };
    world.background.held = true;
    window.control<Button>("account.signIn").click();
    window.settle();
    EXPECT_NE(texts(page).find("Connexion\n"), std::string::npos);
    world.calendar.present = Connection::signedOut;
    window.control<Button>("account.leave").click();
    window.settle();
    EXPECT_TRUE(window.control<Button>("account.signIn").isVisible()) << "at once, whatever the job does";
    world.background.held = false;
    while (world.background.waiting() > 0) world.background.runOne();
    world.loop.runPosted();
    EXPECT_TRUE(stopped);
    EXPECT_EQ(world.state().connection, Connection::signedOut);
    EXPECT_EQ(world.state().syncError, std::nullopt) << "it is no failure";
}

TEST(Welcome, OffersTheThreeSteps) {
    TestWindow window("", "2026-11-24 10:40", true);
    const auto text = texts(*window.view);
    EXPECT_NE(text.find("zone de notification"), std::string::npos) << text;
    window.chosen = window.world.folder / "mes-taches.md";
    testing::writeBytes(window.chosen, "- [ ] Pain\n");
    window.control<Button>("welcome.list").click();
    EXPECT_EQ(window.world.state().file, window.chosen);

    EXPECT_EQ(window.control<Button>("welcome.agenda").text().toStdString(), "Activer") << "an account is there";
    window.control<Button>("welcome.agenda").click();
    window.settle();
    EXPECT_TRUE(window.world.preferences.calendarSync());
    EXPECT_FALSE(window.control<Button>("welcome.agenda").isVisible()) << "done";
}

}
}
