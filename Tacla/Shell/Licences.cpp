#include "Tacla/Shell/Licences.h"

namespace tacla {

dravel::About aboutTacla(const std::string& version) {
    return {.appName = QStringLiteral("Tacla"),
            .version = QString::fromStdString(version),
            .copyright = QStringLiteral("© Dravel · licence MIT"),
            .components = {{QStringLiteral("Qt 6"), QStringLiteral("LGPL 3")},
                           {QStringLiteral("ICU"), QStringLiteral("licence Unicode")},
                           {QStringLiteral("libcurl"), QStringLiteral("licence curl")},
                           {QStringLiteral("libsecret, Nettle"), QStringLiteral("LGPL 2.1, LGPL 3")},
                           {QStringLiteral("JSON for Modern C++, Bootstrap Icons"), QStringLiteral("MIT")},
                           {QStringLiteral("Atkinson Hyperlegible Next, Comfortaa"), QStringLiteral("OFL 1.1")}}};
}

}
