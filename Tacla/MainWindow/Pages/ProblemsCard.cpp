#include "Tacla/MainWindow/Pages/ProblemsCard.h"

#include "DravelKit/DravelUI/TextLabel.h"
#include "Tacla/MainWindow/QtValues.h"

#include <QPainter>
#include <QVBoxLayout>

namespace tacla {

namespace Theme = dravel::Theme;
using namespace Qt::StringLiterals;

ProblemsCard::ProblemsCard(QWidget* parent) : Card(parent), column_(new QVBoxLayout(this)) {
    setObjectName(u"problems"_s);
    column_->setContentsMargins(textColumn, 12, Theme::Space::md, 12);
    column_->setSpacing(Theme::Space::sm);
    hide();
}

void ProblemsCard::setProblems(std::vector<Problem> problems) {
    if (problems == problems_) return;
    problems_ = std::move(problems);
    for (auto* line : std::exchange(lines_, {})) delete line;
    for (const auto& [text, role] : problems_) {
        auto* line = new dravel::TextLabel(Theme::Typography::body, toneOf(role), toQt(text), this);
        line->setObjectName(u"problem"_s);
        line->setWraps(true);
        line->setSelectable(true);
        column_->addWidget(line);
        lines_.push_back(line);
    }
    setVisible(!problems_.empty());
    update();
}

void ProblemsCard::paintEvent(QPaintEvent* event) {
    Card::paintEvent(event);
    QPainter painter(this);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const QRectF column(iconColumn, lines_[i]->y(), iconWidth, Theme::Typography::body.line);
        dravel::paintSymbol(painter, column, dravel::Symbol::ExclamationTriangleFill, 16,
                            toneOf(problems_[i].role).on(*this));
    }
}

}
