// SPDX-License-Identifier: MIT
#include "services/BundleRemovability.h"

#include "platform/FileSystemLayout.h"

#include <QFileInfo>

namespace BundleRemovability {

Obstacle obstacle(const QString &bundlePath, const std::optional<QString> &bundleIdentifier)
{
    const QString prefix = FileSystemLayout::rootPrefix();
    for (const QLatin1StringView protectedFolder : {QLatin1StringView("/System/"), QLatin1StringView("/usr/")}) {
        if (bundlePath.startsWith(prefix + protectedFolder))
            return Obstacle::systemLocation;
    }
    if (bundleIdentifier && bundleIdentifier->startsWith(QLatin1StringView("com.apple."), Qt::CaseInsensitive))
        return Obstacle::appleApp;
    const QFileInfo bundle(bundlePath);
    if (!bundle.exists() && !bundle.isSymLink())
        return Obstacle::none;
    // Taking an entry out of a folder needs write access to the folder; moving a folder to another
    // parent also rewrites its "..", which needs write access to the folder itself.
    if (!QFileInfo(bundle.absolutePath()).isWritable())
        return Obstacle::folderNotWritable;
    if (bundle.isDir() && !bundle.isSymLink() && !bundle.isWritable())
        return Obstacle::bundleNotWritable;
    return Obstacle::none;
}

QString explanation(Obstacle obstacle, const InstalledApp &app)
{
    const QString name = app.name;
    const QString folder = QFileInfo(app.bundlePath()).absolutePath();
    QString why;
    switch (obstacle) {
    case Obstacle::none:
        return {};
    case Obstacle::systemLocation:
        why = QStringLiteral("%1 is part of macOS, which protects it").arg(name);
        break;
    case Obstacle::appleApp:
        why = QStringLiteral("%1 is an Apple app that macOS protects and restores").arg(name);
        break;
    case Obstacle::folderNotWritable:
        why = QStringLiteral("you may not take items out of %1").arg(folder);
        break;
    case Obstacle::bundleNotWritable:
        why = QStringLiteral("%1 belongs to another user or to the system").arg(name);
        break;
    }
    return QStringLiteral("Nothing was moved: %1 can't go to the Trash because %2. "
                          "An administrator can remove it: drag it to the Trash in the Finder and enter an "
                          "administrator's name and password.")
        .arg(name, why);
}

std::optional<QString> check(const InstalledApp &app)
{
    const Obstacle found = obstacle(app.bundlePath(), app.bundleIdentifier);
    if (found == Obstacle::none)
        return std::nullopt;
    return explanation(found, app);
}

} // namespace BundleRemovability
