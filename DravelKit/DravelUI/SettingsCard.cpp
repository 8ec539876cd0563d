#include "DravelKit/DravelUI/SettingsCard.h"

#include "DravelKit/DravelUI/Disc.h"
#include "DravelKit/DravelUI/TextLabel.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

namespace dravel {

using namespace Qt::StringLiterals;
namespace {

TextLabel* wrapping(const Theme::TextStyle& style, const Theme::Tone& tone, const QString& text, QWidget* parent) {
    auto* label = new TextLabel(style, tone, text, parent);
    label->setWraps(true);
    return label;
}

}

SettingRow::SettingRow(Symbol symbol, const QString& title, const QString& detail, QWidget* parent)
    : QWidget(parent), symbol_(symbol), title_(wrapping(Theme::Typography::bodyMedium, Theme::text, title, this)),
      detail_(wrapping(Theme::Typography::callout, Theme::textSecondary, detail, this)), texts_(new QVBoxLayout),
      controls_(new QHBoxLayout) {
    setAccessibleName(title);
    title_->setObjectName(u"settingTitle"_s);
    detail_->setObjectName(u"settingDetail"_s);
    detail_->setHidden(detail.isEmpty());

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(Card::textColumn, Theme::Space::sm, Card::iconColumn, Theme::Space::sm);
    row->setSpacing(Theme::Space::md);
    texts_->setSpacing(0);
    texts_->addStretch();
    texts_->addWidget(title_);
    texts_->addWidget(detail_);
    texts_->addStretch();
    controls_->setSpacing(Theme::Space::sm);
    row->addLayout(texts_, 1);
    row->addLayout(controls_);
    setMinimumHeight(52);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void SettingRow::setTitle(const QString& title) {
    title_->setText(title);
    setAccessibleName(title);
}

void SettingRow::setDetail(const QString& text, const Theme::Tone& tone) {
    if (detail_->text() != text) detail_->setText(text);
    detail_->setTone(tone);
    detail_->setHidden(text.isEmpty());
}

void SettingRow::setNote(const QString& text, const Theme::Tone& tone) {
    if (!note_) {
        note_ = wrapping(Theme::Typography::callout, tone, {}, this);
        note_->setObjectName(u"settingNote"_s);
        texts_->insertWidget(texts_->count() - 1, note_);
    }
    if (note_->text() != text) note_->setText(text);
    note_->setTone(tone);
    note_->setHidden(text.isEmpty());
}

void SettingRow::setDone(bool done, const QString& accessibleName) {
    if (!done_ && done) {
        done_ = new Disc(Disc::done(), this);
        done_->setObjectName(u"settingDone"_s);
        controls_->addWidget(done_);
    }
    if (!done_) return;
    done_->setAccessibleName(accessibleName);
    done_->setVisible(done);
}

void SettingRow::setStatus(const QString& text) {
    if (!status_) {
        status_ = new TextLabel(Theme::Typography::body, Theme::textSecondary, {}, this);
        status_->setObjectName(u"settingStatus"_s);
        controls_->insertWidget(0, status_);
    }
    status_->setText(text);
    status_->setHidden(text.isEmpty());
}

void SettingRow::setTextsSelectable(bool on) {
    title_->setSelectable(on);
    detail_->setSelectable(on);
}

void SettingRow::addControl(QWidget* control) { controls_->addWidget(control); }

void SettingRow::setSeparated(bool on) {
    separated_ = on;
    update();
}

void SettingRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (separated_)
        painter.fillRect(QRect(Card::textColumn, 0, width() - Card::textColumn - Card::iconColumn, 1),
                         Theme::tile.on(*this));
    paintSymbol(painter, QRectF(Card::iconColumn, 0, Card::iconWidth, height()), symbol_, 16,
                Theme::textTertiary.on(*this));
}

SettingsCard::SettingsCard(QWidget* parent) : Card(parent), column_(new QVBoxLayout(this)) {
    column_->setContentsMargins(0, Theme::Space::sm, 0, Theme::Space::sm);
    column_->setSpacing(0);
}

SettingsCard::SettingsCard(Symbol symbol, const QString& title, const QString& intro, QWidget* parent)
    : SettingsCard(parent) {
    setAccessibleName(title);
    auto* header = new CardHeader(symbol, Theme::accent, title, this);
    column_->addWidget(header);
    if (intro.isEmpty()) return;
    header->setFixedHeight(32); // the introduction stands 4 below the title
    auto* label = wrapping(Theme::Typography::callout, Theme::textSecondary, intro, this);
    label->setObjectName(u"cardIntro"_s);
    auto* inset = new QVBoxLayout;
    inset->setContentsMargins(textColumn, 0, iconColumn, 6);
    inset->addWidget(label);
    column_->addLayout(inset);
}

SettingRow* SettingsCard::addRow(SettingRow* row) {
    row->setSeparated(rows_++ > 0);
    column_->addWidget(row);
    return row;
}

}
