// SPDX-License-Identifier: MIT
#include "models/InstalledApp.h"
#include "platform/ByteCountFormatter.h"
#include "platform/FileSystem.h"
#include "platform/PropertyList.h"
#include "services/FileSizeCalculator.h"

namespace {

// Bundle(url:) opens any folder; its information list is Contents/Info.plist, or Info.plist at the top
// of a shallow bundle. Absent when the bundle cannot be opened at all.
std::optional<QVariantMap> infoDictionary(const QString &bundlePath)
{
    bool isDirectory = false;
    if (!FileSystem::exists(bundlePath, &isDirectory) || !isDirectory)
        return std::nullopt;
    const QString contents = bundlePath + QLatin1String("/Contents");
    bool contentsIsDirectory = false;
    const QString infoPath = FileSystem::exists(contents, &contentsIsDirectory) && contentsIsDirectory
        ? contents + QLatin1String("/Info.plist")
        : bundlePath + QLatin1String("/Info.plist");
    return PropertyList::readDictionary(infoPath).value_or(QVariantMap());
}

std::optional<QString> stringValue(const QVariantMap &dictionary, const QString &key)
{
    const auto found = dictionary.constFind(key);
    if (found == dictionary.constEnd() || found->typeId() != QMetaType::QString)
        return std::nullopt;
    return found->toString();
}

} // namespace

std::optional<InstalledApp> InstalledApp::from(const QString &appPath)
{
    if (FileSystem::pathExtension(appPath) != QLatin1String("app"))
        return std::nullopt;
    const QString path = FileSystem::standardizedPath(appPath);

    const std::optional<QVariantMap> info = infoDictionary(path);
    std::optional<QString> name;
    std::optional<QString> identifier;
    if (info) {
        name = stringValue(*info, QStringLiteral("CFBundleName"));
        if (!name)
            name = stringValue(*info, QStringLiteral("CFBundleDisplayName"));
        identifier = stringValue(*info, QStringLiteral("CFBundleIdentifier"));
    }
    if (!name)
        name = FileSystem::lastPathComponent(FileSystem::deletingPathExtension(path));

    return InstalledApp{path, *name, QUrl::fromLocalFile(path), identifier, FileSizeCalculator::directorySize(path)};
}

QString InstalledApp::formattedSize() const
{
    return ByteCountFormatter::string(size);
}

size_t qHash(const InstalledApp &app, size_t seed)
{
    seed = qHashMulti(seed, app.id, app.name, app.path, app.bundleIdentifier.has_value());
    if (app.bundleIdentifier)
        seed = qHash(*app.bundleIdentifier, seed);
    return qHash(app.size, seed);
}
