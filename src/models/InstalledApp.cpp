// SPDX-License-Identifier: MIT
#include "models/InstalledApp.h"
#include "platform/ByteCountFormatter.h"
#include "platform/FileSystem.h"
#include "platform/PropertyList.h"
#include "services/FileSizeCalculator.h"

namespace {

// Any folder opens as a bundle; its information list is Contents/Info.plist, or Info.plist at the top
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

// A file name's bytes that are not UTF-8 are kept in the path as lone surrogates so the bundle can still
// be opened; shown to a person (or written as JSON) they become U+FFFD, as any text viewer shows them.
QString displayableFileName(QString name)
{
    for (qsizetype i = 0; i < name.size(); ++i) {
        const QChar c = name.at(i);
        if (c.isHighSurrogate() && i + 1 < name.size() && name.at(i + 1).isLowSurrogate())
            ++i;
        else if (c.isSurrogate())
            name[i] = QChar::ReplacementCharacter;
    }
    return name;
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
        name = displayableFileName(FileSystem::fileNameWithoutExtension(path));

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
