#pragma once

#include <QDialog>
#include <QString>

#include <vector>

namespace dravel {

// What the About panel tells.
struct About {
    QString appName, version, copyright;
    struct Component {
        QString name, licence;
    };
    std::vector<Component> components; // what the program is made with
};

class AboutPanel final : public QDialog {
    Q_OBJECT

  public:
    AboutPanel(const About&, QWidget* parent);
};

}
