#include "Tacla/MainWindow/Pages/HeroCard.h"

#include "DravelKit/DravelUI/ProgressRing.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "Tacla/MainWindow/QtValues.h"

namespace tacla {

namespace Theme = dravel::Theme;
namespace Typography = dravel::Theme::Typography;
using namespace Qt::StringLiterals;
using dravel::TextLabel;

namespace {

constexpr int heroHeight = 126, padding = 24, ringSize = 78, lineGap = 4;

}

HeroCard::HeroCard(QWidget* parent)
    : Card(parent, Kind::Hero), overline_(new TextLabel(Typography::subtitle, Theme::accentOnSoft, {}, this)),
      headline_(new TextLabel(Typography::pageTitle, Theme::text, {}, this)),
      detail_(new TextLabel(Typography::callout, Theme::textSecondary, {}, this)),
      ring_(new dravel::ProgressRing(this)) {
    setObjectName(u"hero"_s);
    overline_->setObjectName(u"hero.overline"_s);
    headline_->setObjectName(u"hero.headline"_s);
    detail_->setObjectName(u"hero.detail"_s);
    ring_->setObjectName(u"hero.ring"_s);
    setFixedHeight(heroHeight);
}

void HeroCard::setContents(const TodayContents& contents) {
    overline_->setText(toQt(contents.overline));
    headline_->setText(toQt(contents.headline));
    detail_->setText(toQt(contents.detail));
    ring_->setProgress(static_cast<int>(contents.done), static_cast<int>(contents.total), toQt(contents.detail));
}

void HeroCard::resizeEvent(QResizeEvent* event) {
    Card::resizeEvent(event);
    const int ringLeft = width() - padding - ringSize;
    ring_->setGeometry(ringLeft, (height() - ringSize) / 2, ringSize, ringSize);
    int top = padding;
    const int room = ringLeft - 2 * padding;
    for (const auto& [label, style] : {std::pair{overline_, Typography::subtitle},
                                       {headline_, Typography::pageTitle},
                                       {detail_, Typography::callout}}) {
        label->setGeometry(padding, top, room, style.line);
        top += style.line + lineGap;
    }
}

}
