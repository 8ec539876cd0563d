#include "Tacla/MainWindow/HeadlessSnapshot.h"

#include "DravelKit/DravelUI/Look.h"
#include "DravelKit/Foundation/FileError.h"
#include "Tacla/MainWindow/MainView.h"
#include "Tacla/MainWindow/QtValues.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QImageWriter>

#include <algorithm>
#include <cerrno>

namespace tacla {

namespace fs = std::filesystem;
using dravel::FileError;

namespace {

QByteArray formatOf(const fs::path& path) {
    const auto ending = QByteArray::fromStdString(path.extension().string()).mid(1).toLower();
    return QImageWriter::supportedImageFormats().contains(ending) ? ending : QByteArray("png");
}

void write(const QImage& image, const fs::path& path) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, formatOf(path).constData());
    QFile file(pathText(path));
    errno = 0;
    const bool written =
        file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size() && file.flush();
    if (!written) throw FileError(FileError::Kind::system, path, errno != 0 ? errno : EIO);
}

}

void saveSnapshot(AppModel& passive, const DesktopActions& actions, const fs::path& path, const Snapshot& wanted,
                  const dravel::Now& now) {
    dravel::setAppearance(wanted.dark ? dravel::Appearance::Dark : dravel::Appearance::Light);
    MainView view(passive, actions, now);
    view.setAttribute(Qt::WA_DontShowOnScreen);
    view.select(wanted.section);
    view.resize(wanted.width, wanted.height);
    view.show();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); // lays everything out
    QImage image(view.size() * wanted.scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(wanted.scale);
    view.render(&image);
    write(image, path);
}

}
