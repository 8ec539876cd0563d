#include "DravelKit/StandardMenu/AboutPanel.h"

#include "DravelKit/DravelLogo/DravelLogo.h"
#include "DravelKit/DravelUI/Button.h"
#include "DravelKit/DravelUI/TextLabel.h"
#include "DravelKit/DravelUI/Theme.h"

#include <QVBoxLayout>

namespace dravel {

using namespace Qt::StringLiterals;

namespace {

constexpr int iconSize = 64, columnWidth = 300;

QLabel* centred(QLabel* label) {
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

QString lines(const std::vector<About::Component>& components) {
    QStringList all;
    for (const auto& component : components) all << component.name + u" · "_s + component.licence;
    return all.join(u'\n');
}

}

AboutPanel::AboutPanel(const About& about, QWidget* parent) : QDialog(parent) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(u"À propos de "_s + about.appName);
    setObjectName(u"about"_s);

    auto* icon = new QLabel;
    icon->setPixmap(tickIcon().pixmap(QSize(iconSize, iconSize), devicePixelRatioF()));
    auto* name = new TextLabel(Theme::Typography::pageTitle, Theme::text, about.appName);
    auto* version = new TextLabel(Theme::Typography::body, Theme::textSecondary, u"Version "_s + about.version);
    version->setSelectable(true);
    auto* copyright = new TextLabel(Theme::Typography::callout, Theme::textSecondary, about.copyright);
    auto* components = new TextLabel(Theme::Typography::caption, Theme::textTertiary, lines(about.components));
    components->setWraps(true);
    components->setMinimumWidth(columnWidth);
    auto* close = new Button(Button::Kind::neutralOnBackground, u"Fermer"_s);
    connect(close, &QAbstractButton::clicked, this, &QDialog::accept);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(Theme::Space::xl, Theme::Space::xl, Theme::Space::xl, Theme::Space::lg);
    column->setSpacing(Theme::Space::sm);
    column->addWidget(centred(icon));
    for (auto* label : {name, version, copyright}) column->addWidget(centred(label));
    column->addSpacing(Theme::Space::sm);
    column->addWidget(centred(components));
    column->addSpacing(Theme::Space::sm);
    column->addWidget(new DravelLogo, 0, Qt::AlignHCenter);
    column->addSpacing(Theme::Space::sm);
    column->addWidget(close, 0, Qt::AlignHCenter);
    column->setSizeConstraint(QLayout::SetFixedSize);
}

}
