#include "DravelKit/DravelUI/KeysPanel.h"

#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/TextLabel.h"

#include <QGridLayout>

namespace dravel {

using namespace Qt::StringLiterals;

KeysPanel::KeysPanel(const std::vector<Entry>& entries, QWidget* parent) : QDialog(parent) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(u"Raccourcis clavier"_s);
    setObjectName(u"keys"_s);
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(Theme::Space::xl, Theme::Space::lg, Theme::Space::xl, Theme::Space::lg);
    grid->setHorizontalSpacing(Theme::Space::lg);
    grid->setVerticalSpacing(6);
    for (const auto& [keys, meaning] : entries) {
        const int row = grid->rowCount();
        auto* name = new TextLabel(Theme::Typography::subtitle, Theme::text, keys);
        auto* text = new TextLabel(Theme::Typography::body, Theme::textSecondary, meaning);
        name->setAccessibleName(keys + u" : "_s + meaning); // heard together
        grid->addWidget(name, row, 0);
        grid->addWidget(text, row, 1);
    }
    grid->setRowMinimumHeight(grid->rowCount(), Theme::Space::sm);
    auto* close = new Button(Button::Kind::neutralOnBackground, u"Fermer"_s);
    connect(close, &QAbstractButton::clicked, this, &QDialog::accept);
    grid->addWidget(close, grid->rowCount(), 0, 1, 2, Qt::AlignHCenter);
    grid->setSizeConstraint(QLayout::SetFixedSize);
    close->setFocus();
}

}
