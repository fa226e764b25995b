// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QQuickImageProvider>
#include <QString>

// Finds the program's own icon and the icons of app bundles.
namespace AppIconProvider {

// The program's icon, tried in order: the running application's icon, the "AppIcon" PNG resource, the
// PNG beside the executable, the theme's named icon, the "app.fill" symbol, an empty image. Never
// cached. The application's icon is read only on the main thread; elsewhere the chain starts one
// step later.
[[nodiscard]] QImage image(int size = 256);

// The bundle's icon: on a Mac the one the Finder shows; elsewhere the file its Info.plist names
// (CFBundleIconFile, read as .icns or any format Qt's plugins know). The generic app symbol when there
// is none or it can't be decoded.
[[nodiscard]] QImage bundleIcon(const QString &bundlePath, int size);

// A platform symbol drawn from the icon font, white on a grey tile: the stand-in for the generic
// application icon.
[[nodiscard]] QImage genericAppIcon(int size);

} // namespace AppIconProvider

// Serves "image://appicon/self" and "image://appicon/<percent-encoded bundle path>" to QML. Images are
// loaded off the main thread.
class AppIconImageProvider : public QQuickImageProvider {
public:
    AppIconImageProvider();
    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;
};
