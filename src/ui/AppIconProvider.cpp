// SPDX-License-Identifier: MIT
#include "AppIconProvider.h"

#include "platform/FileSystem.h"
#include "platform/PropertyList.h"

#include <QAbstractFileIconProvider>
#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QImageReader>
#include <QPainter>
#include <QPainterPath>
#include <QThread>
#include <QUrl>

namespace {

constexpr int kDefaultSize = 256;

// A bundle's icon is read like its property lists: regular files only, never blocking on a pipe that
// carries the icon's name, and within a size no real icon reaches.
constexpr qint64 kMaximumIconBytes = 64 * 1024 * 1024;

QImage decodeImage(const QByteArray &bytes, int size)
{
    // An .icns holds several sizes and the reader starts at the first, often the smallest: take the
    // smallest that covers the wanted size, else the largest.
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    int best = 0;
    int bestWidth = -1;
    for (int index = 0; index == 0 || reader.jumpToImage(index); ++index) {
        const int width = reader.size().width();
        const bool better = bestWidth < size ? width > bestWidth : (width >= size && width < bestWidth);
        if (better) {
            best = index;
            bestWidth = width;
        }
        if (reader.imageCount() <= 1)
            break;
    }
    buffer.seek(0);
    QImageReader chosen(&buffer);
    chosen.jumpToImage(best);
    const QImage image = chosen.read();
    if (image.isNull() || image.width() <= 0)
        return {};
    return image.width() > size ? image.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation) : image;
}

QImage readImage(const QString &path, int size)
{
    // The program's own picture lives in the resources, which only QFile reads.
    if (path.startsWith(QLatin1Char(':'))) {
        QFile resource(path);
        return resource.open(QIODevice::ReadOnly) ? decodeImage(resource.readAll(), size) : QImage();
    }
    const std::optional<QByteArray> bytes = FileSystem::readFile(path, kMaximumIconBytes);
    return bytes ? decodeImage(*bytes, size) : QImage();
}

QString iconFileOf(const QString &bundlePath)
{
    const auto info = PropertyList::readDictionary(bundlePath + QStringLiteral("/Contents/Info.plist"));
    if (!info)
        return {};
    QString name = info->value(QStringLiteral("CFBundleIconFile")).toString();
    if (name.isEmpty() || name.contains(QLatin1Char('/')))
        return {};
    if (QFileInfo(name).suffix().isEmpty())
        name += QStringLiteral(".icns");
    return bundlePath + QStringLiteral("/Contents/Resources/") + name;
}

} // namespace

namespace AppIconProvider {

QImage image(int size)
{
    // QGuiApplication's icon and the icon theme belong to the main thread.
    const bool onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
    if (onMainThread) {
        const QIcon icon = QGuiApplication::windowIcon();
        if (!icon.isNull()) {
            const QImage fromApplication = icon.pixmap(size, size).toImage();
            if (fromApplication.width() > 0)
                return fromApplication;
        }
    }
    for (const QString &path : {QStringLiteral(":/AppIcon.png"),
                                QCoreApplication::applicationDirPath() + QStringLiteral("/../Resources/AppIcon.png")}) {
        if (QImage found = readImage(path, size); !found.isNull())
            return found;
    }
    if (onMainThread) {
        if (const QIcon named = QIcon::fromTheme(QStringLiteral("AppIcon")); !named.isNull())
            return named.pixmap(size, size).toImage();
    }
    if (QImage symbol = genericAppIcon(size); !symbol.isNull())
        return symbol;
    return {};
}

QImage bundleIcon(const QString &bundlePath, int size)
{
#ifdef Q_OS_MACOS
    // The icon the Finder shows, through Qt's platform theme: it also draws apps whose icon lives only
    // in an asset catalog, which no image plugin reads.
    const QIcon system = QAbstractFileIconProvider().icon(QFileInfo(bundlePath));
    if (!system.isNull()) {
        if (QImage found = system.pixmap(size, size).toImage(); !found.isNull())
            return found;
    }
#endif
    if (const QString file = iconFileOf(bundlePath); !file.isEmpty()) {
        if (QImage found = readImage(file, size); !found.isNull())
            return found;
    }
    return genericAppIcon(size);
}

QImage genericAppIcon(int size)
{
    QImage tile(size, size, QImage::Format_ARGB32_Premultiplied);
    tile.fill(Qt::transparent);
    QPainter painter(&tile);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath shape;
    shape.addRoundedRect(QRectF(0, 0, size, size), size * 0.22, size * 0.22);
    painter.fillPath(shape, QColor(0x8e, 0x8e, 0x93));
    QFont font(QStringLiteral("Material Icons"));
    font.setPixelSize(size * 2 / 3);
    painter.setFont(font);
    painter.setPen(Qt::white);
    // The font draws the glyph from its ligature name.
    painter.drawText(QRectF(0, 0, size, size), Qt::AlignCenter, QStringLiteral("apps"));
    return tile;
}

} // namespace AppIconProvider

AppIconImageProvider::AppIconImageProvider()
    : QQuickImageProvider(QQuickImageProvider::Image, QQuickImageProvider::ForceAsynchronousImageLoading)
{
}

QImage AppIconImageProvider::requestImage(const QString &id, QSize *size, const QSize &requestedSize)
{
    const int edge = requestedSize.isValid() ? qMax(requestedSize.width(), requestedSize.height()) : kDefaultSize;
    QImage image;
    if (id == QLatin1String("self")) {
        image = AppIconProvider::image(edge);
    } else {
        // The rows hand over either a plain path or the file URL of the bundle.
        const QString decoded = QUrl::fromPercentEncoding(id.toUtf8());
        const QUrl url(decoded);
        image = AppIconProvider::bundleIcon(url.isLocalFile() ? url.toLocalFile() : decoded, edge);
    }
    if (size)
        *size = image.size();
    return image;
}
