#include "DravelKit/DravelUI/SettingsCard.h"
#include "Tacla/TaskList/TaskFile.h"
#include "tests/MainWindow/TestWindow.h"

namespace tacla::testing {

using namespace dravel;

struct AddCard : ::testing::Test {
    TestWindow window{""};
    TextField& title = window.field("add.title");
};

TEST_F(AddCard, AddsToTheChosenDayAndIsReadyForTheNext) {
    title.setText(u"  Appeler la banque "_s);
    window.click("add.tomorrow");
    window.click("add.hasTime");
    window.click("add.strong");
    window.click("add.button");
    EXPECT_EQ(window.focused(), "add.title");
    window.type(u"Relancer\r"_s);
    EXPECT_EQ(window.world.text(), "- [ ] ❗ Appeler la banque · 2026-11-25 10:00\n- [ ] Relancer · 2026-11-25\n")
        << "the day stays, time and priority do not";
    EXPECT_FALSE(title.isUndoAvailable()) << "what was added is the list's to take back";
    window.type(u"   \r"_s);
    EXPECT_EQ(title.text(), QString());
    EXPECT_EQ(window.world.state().tasks.size(), 2u) << "blanks are no title";
}

TEST_F(AddCard, OffersTheMomentThatTheTitleTells) {
    auto& offer = window.control<Offer>("add.offer");
    title.setFocus();
    window.type(u"Appeler Paul demain 14:30 prioritaire"_s);
    EXPECT_TRUE(offer.isVisible());
    EXPECT_EQ(offer.text().toStdString(), "demain 14:30 · prioritaire");
    window.press(Qt::Key_Tab);
    EXPECT_EQ(title.text().toStdString(), "Appeler Paul");
    EXPECT_EQ(window.focused(), "add.title");
    EXPECT_FALSE(offer.isVisible());
    window.press(Qt::Key_Return);
    const std::string paul = "- [ ] ❗ Appeler Paul · 2026-11-25 14:30\n", date = "- [ ] Pain demain · 2026-11-24\n";
    EXPECT_EQ(window.world.text(), paul);
    window.type(u"Pain demain\r"_s);
    EXPECT_EQ(window.world.text(), paul + date) << "as typed, on the day before the words; nothing changes unasked";
    window.type(u"Vin ce soir"_s);
    window.click("add.offer");
    title.undo();
    EXPECT_EQ(title.text().toStdString(), "Vin ce soir");
    EXPECT_TRUE(offer.isVisible());
}

// A title, then the date, the time and the priority without a mouse: 14 keys.
TEST_F(AddCard, TakesEverythingByKeys) {
    title.setFocus();
    for (const auto& [day, time, line] : {std::tuple{u"22/12"_s, u"1430"_s, "2026-12-22 14:30"},
                                          {u"3/2"_s, u"9h5"_s, "2027-02-03 09:05"},
                                          {u"240128"_s, u"930"_s, "2028-01-24 09:30"},
                                          {u"31/12/26"_s, u"7"_s, "2026-12-31 07:00"}}) {
        window.type(u"Pain\t"_s);
        EXPECT_EQ(window.focused(), "add.date");
        QTest::keyClicks(QApplication::focusWidget(), day + u'\t');
        window.type(time);
        EXPECT_EQ(window.focused(), "add.time");
        for (const auto key : {Qt::Key_Tab, Qt::Key_Space, Qt::Key_Return}) window.press(key);
        EXPECT_EQ(window.world.state().tasks.back().title, "❗ Pain");
        EXPECT_EQ(window.world.state().tasks.back().when(), line);
        EXPECT_EQ(window.focused(), "add.title");
    }
}

TEST_F(AddCard, KeepsWhatWasTypedUntilItIsInTheFile) {
    QApplication::clipboard()->setText(u"Pain\u0085Vin"_s);
    title.paste();
    EXPECT_EQ(title.text().toStdString(), "Pain Vin");
    std::filesystem::remove(window.world.file);
    std::filesystem::create_directory(window.world.file);
    window.click("add.button");
    EXPECT_EQ(title.text().toStdString(), "Pain Vin");
    EXPECT_TRUE(window.shows("add.reason"));
    EXPECT_EQ(window.control<TextLabel>("add.reason").text().toStdString(), window.world.state().fileError.value());
    std::filesystem::remove(window.world.file);
    window.world.save("");
    window.click("add.button");
    EXPECT_EQ(window.world.text(), "- [ ] Pain Vin · 2026-11-24\n");
    EXPECT_EQ(title.text(), QString());
    EXPECT_FALSE(window.shows("add.reason"));
}

TEST_F(AddCard, MakesSeveralTasksOfSeveralLinesWhenAsked) {
    QApplication::clipboard()->setText(
        u"# Courses\r\n- Pain\n\n- [x] ❗ Vin · 2026-12-24 18:00 · ✅ 2026-11-20\nSel\n"_s);
    title.paste();
    title.setFocus();
    EXPECT_EQ(window.control<Offer>("add.offer").text().toStdString(), "Ajouter 3 tâches ?");
    window.press(Qt::Key_Tab);
    const auto saved = "- [ ] Pain · 2026-11-24\n- [ ] ❗ Vin · 2026-12-24 18:00\n- [ ] Sel · 2026-11-24\n";
    EXPECT_EQ(window.world.text(), saved);
    EXPECT_EQ(title.text(), QString());
    window.world.list().undo();
    EXPECT_EQ(window.world.text(), "") << "one edit";
}

TEST(LatePage, PostponesAllAtOnce) {
    TestWindow window(
        "- [ ] Pain · 2026-11-20 08:00\n- [ ] Vin · 2026-11-21 · due 2026-11-01\n- [ ] Sel · 2026-11-25\n");
    const auto before = window.world.text();
    window.press(Qt::Key_R, Qt::ControlModifier);
    QTest::keyClick(&window.control<QMenu>("postponeAll.menu"), Qt::Key_D);
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
    window.type(u"ete"_s);
    EXPECT_EQ(window.shown(), "Thé d'été [30/11]\nÉté indien [20/11]\n");
    window.press(Qt::Key_Down);
    window.press(Qt::Key_Space);
    EXPECT_EQ(window.world.state().tasks.at(1).done, true) << "rows act as everywhere";
    window.press(Qt::Key_Escape);
    EXPECT_EQ(window.page().objectName(), u"page.today"_s);
    EXPECT_EQ(window.focused(), "Pain check");
    for (const auto* way : {"find.open", "section.today"}) window.click(way);
    EXPECT_EQ(window.page().objectName(), u"page.today"_s) << "with the pointer alone";
}

TEST_F(AddCard, MovesWithTheDayAtMidnight) {
    window.fileBecomes("- [ ] Pain · 2026-11-24\n");
    window.world.loop.advanceTo(moment("2026-11-24 23:59"));
    const auto dayAfter = [&](std::chrono::minutes time) {
        window.world.loop.advance(time);
        window.settle();
        return window.control<DateField>("add.date").date();
    };
    EXPECT_EQ(dayAfter(0min), QDate(2026, 11, 24));
    EXPECT_EQ(dayAfter(2min), QDate(2026, 11, 25));
    EXPECT_TRUE(window.tells("Aujourd'hui · mercredi 25 novembre\n"));
    EXPECT_EQ(window.shown(), "Pain [24/11]\n");

    window.click("add.tomorrow");
    EXPECT_EQ(dayAfter(0h), QDate(2026, 11, 26));
    EXPECT_EQ(dayAfter(24h), QDate(2026, 11, 26)) << "picked by the user";
    EXPECT_EQ(dayAfter(24h), QDate(2026, 11, 27)) << "not a day that is past";
}

TEST(Pages, OfferToConvertALineEndThatHidesADate) {
    const std::string tasks = "- [ ] Pain · 2026-11-24\r\n";
    TestWindow window(tasks);
    EXPECT_TRUE(window.tells("1 ligne finit par un retour chariot : sa date n'est pas lue"));
    EXPECT_EQ(window.shown(), "");
    window.click("problem.lineEnds");
    EXPECT_FALSE(window.shows("problems"));
    EXPECT_EQ(window.world.text(), "- [ ] Pain · 2026-11-24\n");
    window.world.list().undo();
    EXPECT_EQ(window.world.text(), tasks);
}

TEST(SettingsPage, LooksAtACopyAndBringsItBack) {
    TestWindow window("- [ ] Pain\n");
    window.world.list().toggle(window.world.task("Pain"));
    window.page(Section::settings);
    const auto choose = [&](int action) {
        window.click("copies.bringBack");
        auto& menu = window.control<QMenu>("copies");
        EXPECT_EQ(menu.actions().at(0)->text(), u"Aujourd'hui à 10:40"_s);
        menu.actions().at(0)->menu()->actions().at(action)->trigger();
        menu.close();
        window.settle();
    };
    choose(0);
    EXPECT_TRUE(window.asked.at(0).starts_with("open 2026-11-24 10h40m00s ")) << window.asked.at(0);
    writeBytes(window.world.file, "- [ ] Lait\n"); // since the list was last looked at
    choose(1);
    EXPECT_EQ(window.world.text(), "- [ ] Lait\n");
    choose(1);
    EXPECT_EQ(window.world.text(), "- [ ] Pain\n");
    window.world.list().undo();
    EXPECT_EQ(window.world.text(), "- [ ] Lait\n");
}

TEST(SettingsPage, AsksTheDesktopAndFollowsItsAnswers) {
    TestWindow window("");
    window.page(Section::settings);
    EXPECT_TRUE(window.tells("/home/camille/.local/bin/tacla\ntacla list · tacla done <texte> · tacla sync"));
    for (const char* button : {"file.open", "file.reveal", "change.choose"}) window.click(button);
    EXPECT_EQ(window.world.state().file, window.world.file) << "cancelled";
    window.chosen = window.world.folder / "autre.md";
    window.click("change.create");
    EXPECT_EQ(window.asked, (std::vector<std::string>{"open taches.md", "reveal taches.md", "choose", "create"}));
    EXPECT_TRUE(window.tells(window.chosen.string()));
    EXPECT_EQ(readBytes(window.chosen), TaskFile::newFileText);

    window.click("login.switch");
    EXPECT_TRUE(window.world.loginItem.enabled);
    window.world.loginItem.failure.emplace(FileError::Kind::system, "/autostart", EACCES);
    window.click("login.switch");
    EXPECT_TRUE(window.control<Switch>("login.switch").isChecked()) << "the desktop refused";
}

TEST(SettingsPage, FollowsTheAccount) {
    TestWindow window("");
    window.world.calendar.present = Connection::signedOut;
    window.page(Section::settings);
    window.click("account.signOut");
    window.world.loop.runPosted();
    window.world.calendar.clientFile = OAuthClient::Source::missing;
    window.world.list().read();
    window.settle();
    EXPECT_FALSE(window.shows("account.signIn"));
    EXPECT_TRUE(window.tells("fichier client, gratuit"));
    window.click("account.guide");
    window.chosen = "/tmp/photo.png";
    window.world.calendar.failure = "Client Google illisible";
    window.click("client.choose");
    EXPECT_TRUE(window.tells("Client Google illisible\n"));
    window.world.calendar.failure.reset();
    window.chosen = "/tmp/client_secret_1.json";
    window.click("client.choose");
    EXPECT_FALSE(window.tells("Client Google illisible\n"));
    EXPECT_TRUE(window.shows("account.signIn"));
    EXPECT_EQ(window.asked, (std::vector<std::string>{"guide", "client", "client"}));
    window.world.calendar.clientFile = OAuthClient::Source::package;
    window.world.list().read();
    window.settle();
    EXPECT_FALSE(window.shows("client.choose")) << "the maker's own";
}

TEST(SettingsPage, LetsTheUserLeaveTheSignIn) {
    TestWindow window("");
    auto& world = window.world;
    window.page(Section::settings);
    world.mirror(MirrorEvent::Kind::signOutAsked);
    world.loop.runPosted();
    bool stopped = false;
    world.calendar.duringSignIn = [&](const auto&, const auto& stop) {
        stopped = stop.stop_requested();
        if (stopped) throw std::runtime_error("Connexion Google interrompue");
    };
    world.background.held = true;
    window.click("account.signIn");
    EXPECT_TRUE(window.tells("Connexion\n"));
    world.calendar.present = Connection::signedOut;
    window.click("account.leave");
    EXPECT_TRUE(window.shows("account.signIn")) << "at once, whatever the job does";
    world.background.held = false;
    world.background.finish();
    EXPECT_TRUE(stopped);
    EXPECT_EQ(world.state().connection, Connection::signedOut);
    EXPECT_EQ(world.state().syncError, std::nullopt) << "it is no failure";
}

TEST(Welcome, OffersTheThreeSteps) {
    TestWindow window("", "2026-11-24 10:40", true);
    EXPECT_TRUE(window.tells("zone de notification"));
    window.chosen = window.world.folder / "mes-taches.md";
    writeBytes(window.chosen, "- [ ] Pain\n");
    window.click("welcome.list");
    EXPECT_EQ(window.world.state().file, window.chosen);

    EXPECT_EQ(window.control<Button>("welcome.agenda").text().toStdString(), "Activer") << "an account is there";
    window.click("welcome.agenda");
    EXPECT_TRUE(window.world.preferences.calendarSync());
    EXPECT_FALSE(window.shows("welcome.agenda")) << "done";
}

}
