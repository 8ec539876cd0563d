#include "Tacla/TaskList/TaskFile.h"
#include "tests/MainWindow/WindowWorld.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/DateField.h"
#include "DravelKit/DravelUI/SettingsCard.h"
#include "DravelKit/DravelUI/Switch.h"
#include "DravelKit/DravelUI/TextField.h"
#include "DravelKit/DravelUI/TextLabel.h"

#include <QTest>

#include <gtest/gtest.h>

namespace tacla {
namespace {

using dravel::Button;
using testing::WindowWorld;

// Every text that shows in a part of the window, top to bottom.
std::string texts(const QWidget& part) {
    std::string all;
    for (const auto* label : part.findChildren<dravel::TextLabel*>())
        if (label->isVisible() && !label->text().isEmpty()) all += label->text().toStdString() + "\n";
    return all;
}

TEST(AddCard, AddsToTheChosenDayAndIsReadyForTheNext) {
    WindowWorld window("");
    auto& title = window.control<dravel::TextField>("add.title");
    title.setText(QStringLiteral("  Appeler la banque "));
    QTest::mouseClick(&window.control<QWidget>("add.tomorrow"), Qt::LeftButton);
    window.control<dravel::Switch>("add.hasTime").click();
    window.control<dravel::Switch>("add.strong").click();
    window.control<Button>("add.button").click();
    EXPECT_EQ(window.world.text(), "- [ ] ❗ Appeler la banque · 2026-11-25 10:00\n");
    EXPECT_EQ(window.focused(), "add.title");
    EXPECT_EQ(title.text(), QString());

    QTest::keyClicks(&title, QStringLiteral("Relancer"));
    window.press(Qt::Key_Return);
    EXPECT_EQ(window.world.text(), "- [ ] ❗ Appeler la banque · 2026-11-25 10:00\n- [ ] Relancer · 2026-11-25\n")
        << "the day stays, time and priority do not";
    QTest::keyClicks(&title, QStringLiteral("   "));
    window.press(Qt::Key_Return);
    EXPECT_EQ(title.text(), QString());
    EXPECT_EQ(window.world.state().tasks.size(), 2u);
}

TEST(AddCard, MovesWithTheDayAtMidnight) {
    WindowWorld window("- [ ] Pain · 2026-11-24\n", "2026-11-24 23:59");
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
}

TEST(Pages, TellWhatIsWrongWithTheFile) {
    WindowWorld window("- [ ] Pain · 2026-11-20\n");
    EXPECT_FALSE(window.control<QWidget>("problems").isVisible());
    std::filesystem::remove(window.world.file);
    window.world.model.reload();
    window.settle();
    const auto problem = texts(window.control<QWidget>("problems"));
    EXPECT_EQ(problem.find("Impossible de lire " + window.world.file.string() + " : "), 0u) << problem;
    EXPECT_EQ(window.shown(), "Pain [20/11]\n") << "the last list that could be read";
    EXPECT_NE(texts(window.control<QWidget>("syncBadge")).find("Liste illisible"), std::string::npos);
}

TEST(Pages, SayThatThereIsNothing) {
    WindowWorld window("");
    EXPECT_NE(texts(*window.view).find("Journée libre\n0 faite\n"), std::string::npos) << texts(*window.view);
    EXPECT_NE(texts(*window.view).find("Rien de prévu aujourd'hui.\n"), std::string::npos);
    EXPECT_NE(texts(window.page(Section::late)).find("Aucun retard. 👌\n"), std::string::npos);
    EXPECT_NE(texts(window.page(Section::upcoming)).find("Rien de prévu pour la suite.\n"), std::string::npos);
    EXPECT_NE(texts(window.page(Section::done)).find("Rien de coché pour l'instant.\n"), std::string::npos);
}

TEST(SettingsPage, ShowsAndChangesTheSettings) {
    WindowWorld window("");
    auto& page = window.page(Section::settings);
    EXPECT_NE(texts(page).find(window.world.file.string()), std::string::npos) << texts(page);
    EXPECT_NE(texts(page).find("/home/camille/.local/bin/tacla\ntacla list · tacla done <texte> · tacla sync"),
              std::string::npos);
    for (const char* button : {"file.open", "file.reveal", "copies.show", "web.open"})
        window.control<Button>(button).click();
    EXPECT_EQ(window.asked, (std::vector<std::string>{"open taches.md", "reveal taches.md", "copies", "agenda"}));

    window.control<dravel::Switch>("login.switch").click();
    EXPECT_TRUE(window.world.loginItem.enabled);
    window.world.loginItem.failure.emplace(dravel::FileError::Kind::system, "/autostart", EACCES);
    window.control<dravel::Switch>("login.switch").click();
    EXPECT_TRUE(window.control<dravel::Switch>("login.switch").isChecked()) << "the desktop refused";

    window.control<dravel::Switch>("mirror.switch").click();
    window.settle();
    EXPECT_TRUE(window.world.preferences.calendarSync());
    EXPECT_NE(texts(page).find("Dans un agenda à part, sans rappel sur le téléphone."), std::string::npos);
}

TEST(SettingsPage, UsesTheFileThatIsChosen) {
    WindowWorld window("");
    window.page(Section::settings);
    window.control<Button>("change.choose").click();
    EXPECT_EQ(window.world.state().file, window.world.file) << "cancelled";
    window.chosen = window.world.folder / "autre.md";
    window.control<Button>("change.create").click();
    EXPECT_EQ(window.world.state().file, window.chosen);
    EXPECT_EQ(testing::readBytes(window.chosen), TaskFile::newFileText);
    EXPECT_EQ(window.asked, (std::vector<std::string>{"choose", "create"}));
}

TEST(SettingsPage, FollowsTheAccount) {
    WindowWorld window("");
    window.world.calendar.present = Connection::signedOut;
    auto& page = window.page(Section::settings);
    EXPECT_NE(texts(page).find("Connecté à votre compte Google."), std::string::npos);
    EXPECT_FALSE(window.control<Button>("account.signIn").isVisible());
    window.world.model.signOut();
    window.world.loop.runPosted();
    window.settle();
    EXPECT_TRUE(window.control<Button>("account.signIn").isVisible());
    window.world.background.held = true;
    window.control<Button>("account.signIn").click();
    window.settle();
    EXPECT_NE(texts(page).find("Connexion\n"), std::string::npos);
    EXPECT_FALSE(window.control<Button>("account.signIn").isVisible());
}

TEST(Welcome, OffersTheThreeSteps) {
    WindowWorld window("", "2026-11-24 10:40", true);
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
