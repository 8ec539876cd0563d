#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/DravelPage.h"
#include "DravelKit/DravelUI/DravelShell.h"
#include "DravelKit/DravelUI/SidebarList.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "DravelKit/DravelUI/TextPaint.h"

#include <gtest/gtest.h>

#include <QScrollBar>
#include <QTest>

using namespace dravel;
using namespace Qt::StringLiterals;

static void show(QWidget& widget, QSize size) {
    widget.resize(size);
    widget.show();
    (void)QTest::qWaitForWindowExposed(&widget);
    for (int round = 0; round < 3; ++round) QCoreApplication::sendPostedEvents();
}

static Card* card(int height) {
    auto* made = new Card;
    made->setFixedHeight(height);
    return made;
}

static QRect inside(const QWidget& widget, QWidget& frame) { return {widget.mapTo(&frame, QPoint()), widget.size()}; }

TEST(DravelPage, RevealsWhatIsOutOfViewAndTellsWhatShows) {
    DravelPage page;
    std::vector<Card*> cards;
    for (int count = 0; count < 10; ++count) page.add(cards.emplace_back(card(200)));
    show(page, {770, 600});
    int changes = 0;
    QObject::connect(&page, &DravelPage::viewChanged, [&] { ++changes; });
    EXPECT_EQ(page.visiblePart(*cards[2]), QRect(0, 0, 722, 144)); // its top is at 456 of 600
    EXPECT_TRUE(page.visiblePart(*cards[9]).isEmpty());
    page.reveal(*cards[9]);
    EXPECT_EQ(page.visiblePart(*cards[9]).height(), 200);
    page.reveal(*cards[0]);
    EXPECT_EQ(page.verticalScrollBar()->value(), 8); // 16 above it stay in view
    EXPECT_EQ(changes, 2);

    for (auto* one : cards) (new Button(Button::Kind::neutral, u"Ouvrir"_s, one))->show();
    auto* focused = cards[0]->findChild<Button*>();
    focused->setFocus(Qt::TabFocusReason);
    for (const auto key : {Qt::Key_PageDown, Qt::Key_PageDown, Qt::Key_PageDown, Qt::Key_PageUp, Qt::Key_PageUp}) {
        QTest::keyClick(page.focusWidget(), key);
        EXPECT_EQ(page.visiblePart(*page.focusWidget()), page.focusWidget()->rect()) << "paging takes the focus along";
    }
}

TEST(DravelShell, KeepsTheSidebarBetweenItsMinimumAndThePage) {
    DravelShell shell(u"Tacla"_s, {}, u"Sections"_s);
    shell.list().addRow(Symbol::sun, u"Aujourd'hui"_s, u"today"_s);
    auto* page = new DravelPage;
    shell.showPage(page);
    show(shell, {980, 720});
    EXPECT_EQ(inside(*page, shell), QRect(210, 0, 770, 720));
    EXPECT_EQ(inside(shell.list(), shell), QRect(12, 72, 185, 36));
    for (const auto& [wanted, given] : {std::pair{100, 190}, {300, 300}, {900, 500}}) {
        shell.setSidebarWidth(wanted);
        EXPECT_EQ(shell.sidebarWidth(), given);
    }
    auto* row = shell.list().findChild<SidebarRow*>();
    row->setFocus();
    for (const auto key : {Qt::Key_Left, Qt::Key_Left, Qt::Key_Right}) QTest::keyClick(row, key);
    EXPECT_EQ(shell.sidebarWidth(), 484);
    shell.setSidebarWidth(900);
    shell.resize(820, 560);
    EXPECT_EQ(shell.sidebarWidth(), 340);
    shell.resize(640, 560); // half of a small screen
    EXPECT_EQ(inside(*page, shell), QRect(64, 0, 576, 560));
    EXPECT_EQ(shell.list().findChild<SidebarRow*>()->toolTip(), u"Aujourd'hui"_s);
    shell.resize(1500, 720);
    EXPECT_EQ(shell.sidebarWidth(), 900); // what was asked for fits now
}

TEST(Paragraph, IsAWholeNumberOfLineBoxes) {
    const auto height = [](const QString& text) { return Paragraph(text, Theme::Typography::taskTitle, 200).height(); };
    for (const auto& text : {u""_s, u"Pain 🎉 ✅"_s, u"خبز وحليب"_s}) EXPECT_EQ(height(text), 20) << text.toStdString();
    EXPECT_EQ(height(u"Un\nDeux"_s), 40);
    EXPECT_EQ(height(QString(10'000, u'x')) % 20, 0); // no place to break: breaks anywhere
}
