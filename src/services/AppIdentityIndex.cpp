// SPDX-License-Identifier: MIT
#include "services/AppIdentityIndex.h"

#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"
#include "platform/PropertyList.h"

#include <QSet>

#include <algorithm>
#include <array>

namespace AppIdentityIndex {

namespace {

const QString macOS = QStringLiteral("macOS");

std::optional<QString> stringValue(const QVariantMap &dictionary, const QString &key)
{
    const QVariant value = dictionary.value(key);
    if (value.typeId() != QMetaType::QString || value.toString().isEmpty())
        return std::nullopt;
    return value.toString();
}

std::optional<QVariantMap> bundleInfo(const QString &bundle)
{
    if (auto info = PropertyList::readDictionary(bundle + QLatin1String("/Contents/Info.plist")))
        return info;
    return PropertyList::readDictionary(bundle + QLatin1String("/Info.plist"));
}

// The Mac's own view of a path under the root: "/Applications/X.app" for ROOT/Applications/X.app.
QString macPath(const QString &path)
{
    const QString prefix = FileSystemLayout::rootPrefix();
    return !prefix.isEmpty() && path.startsWith(prefix + QLatin1Char('/')) ? path.mid(prefix.size()) : path;
}

bool hasExtension(const QString &name, const char *extension)
{
    return FileSystem::pathExtension(name).compare(QLatin1String(extension), Qt::CaseInsensitive) == 0;
}

// Where bundles keep bundles of their own, and which of the entries there count. The index looks one
// level into each and no deeper, so that it stays a matter of a few listings per app.
struct EmbeddedFolder {
    const char *folder;
    const char *extension; // nullptr: any entry with an information list
};
constexpr std::array<EmbeddedFolder, 10> embeddedFolders = {{
    {"PlugIns", "appex"},
    {"XPCServices", "xpc"},
    {"Helpers", nullptr},
    {"Frameworks", "app"},
    {"MacOS", "app"},
    {"Library/LoginItems", "app"},
    {"Library/QuickLook", nullptr},
    {"Library/Spotlight", "mdimporter"},
    {"Library/SystemExtensions", "systemextension"},
    {"Extensions", "appex"},
}};

void addEmbedded(AppIdentity &identity, QSet<QString> &seen, const QString &identifier)
{
    // A name without a dot is no reverse-domain identifier, and as a search term it would match anything.
    if (!identifier.contains(QLatin1Char('.')) || identifier.size() < 5 || seen.contains(identifier.toLower()))
        return;
    seen.insert(identifier.toLower());
    identity.embeddedIdentifiers.append(identifier);
}

void readEmbedded(AppIdentity &identity)
{
    const QString contents = identity.bundlePath + QLatin1String("/Contents");
    const auto top = FileSystem::contentsOfDirectory(contents);
    if (!top)
        return;
    QSet<QString> present;
    for (const FileSystem::DirectoryEntry &entry : *top)
        present.insert(entry.name);
    QSet<QString> seen;
    if (identity.bundleIdentifier)
        seen.insert(identity.bundleIdentifier->toLower());
    for (const EmbeddedFolder &place : embeddedFolders) {
        const QString folder = QLatin1String(place.folder);
        if (!present.contains(folder.section(QLatin1Char('/'), 0, 0)))
            continue;
        const auto entries = FileSystem::contentsOfDirectory(contents + QLatin1Char('/') + folder);
        if (!entries)
            continue;
        for (const FileSystem::DirectoryEntry &entry : *entries) {
            if (place.extension && !hasExtension(entry.name, place.extension))
                continue;
            if (const auto info = bundleInfo(entry.path)) {
                if (const auto identifier = stringValue(*info, QStringLiteral("CFBundleIdentifier")))
                    addEmbedded(identity, seen, *identifier);
            }
        }
    }
    // Privileged helpers are installed from here under their identifier as file name.
    if (present.contains(QStringLiteral("Library"))) {
        if (const auto helpers = FileSystem::contentsOfDirectory(contents + QLatin1String("/Library/LaunchServices"))) {
            for (const FileSystem::DirectoryEntry &entry : *helpers)
                addEmbedded(identity, seen, entry.name);
        }
    }
}

bool isSystemBundle(const QString &bundlePath)
{
    return macPath(bundlePath).startsWith(QLatin1String("/System/"));
}

void finish(AppIdentity &identity)
{
    identity.isApple = isSystemBundle(identity.bundlePath)
        || (identity.bundleIdentifier && identity.bundleIdentifier->startsWith(QLatin1String("com.apple."), Qt::CaseInsensitive));
    readEmbedded(identity);
}

void add(Index &index, AppIdentity identity)
{
    if (index.byBundlePath.contains(identity.bundlePath))
        return;
    const qsizetype at = index.apps.size();
    for (const QString &identifier : identity.identifiers())
        index.byIdentifier[identifier.toLower()].append(at);
    index.byName[identity.name.toLower()].append(at);
    const QString fileName = FileSystem::fileNameWithoutExtension(identity.bundlePath).toLower();
    if (fileName != identity.name.toLower())
        index.byName[fileName].append(at);
    index.byBundlePath.insert(identity.bundlePath, at);
    index.byBundlePath.insert(macPath(identity.bundlePath), at);
    index.apps.append(std::move(identity));
}

void addFolder(Index &index, const QString &folder)
{
    const auto entries = FileSystem::contentsOfDirectory(FileSystem::standardizedPath(folder));
    if (!entries)
        return;
    for (const FileSystem::DirectoryEntry &entry : *entries) {
        if (FileSystem::pathExtension(entry.name) != QLatin1String("app") || index.byBundlePath.contains(entry.path))
            continue;
        if (auto identity = identify(entry.path))
            add(index, std::move(*identity));
    }
}

void addSystemApps(Index &index)
{
    for (const char *folder : {"/System/Applications", "/System/Applications/Utilities", "/System/Library/CoreServices"})
        addFolder(index, FileSystemLayout::systemPath(QLatin1String(folder)));
}

ItemOwner ownerFor(const AppIdentity &app, const QString &reason)
{
    if (app.isApple)
        return ItemOwner{macOS, app.bundleIdentifier, reason};
    return ItemOwner{app.name, app.bundleIdentifier, reason};
}

// The first app of a bucket that is not the scanned bundle itself.
std::optional<qsizetype> other(const QList<qsizetype> &apps, const Index &index, const AppIdentity *scanned)
{
    for (const qsizetype at : apps) {
        if (!scanned || index.apps.at(at).bundlePath != scanned->bundlePath)
            return at;
    }
    return std::nullopt;
}

bool isInside(const QString &path, const QString &bundle)
{
    return path == bundle || path.startsWith(bundle + QLatin1Char('/'));
}

bool pointsInto(const QString &program, const AppIdentity &app)
{
    return isInside(program, app.bundlePath) || isInside(program, macPath(app.bundlePath));
}

bool isLaunchItem(const QString &path)
{
    const QString folder = FileSystem::lastPathComponent(FileSystem::deletingLastPathComponent(path));
    return FileSystem::pathExtension(path) == QLatin1String("plist")
        && (folder == QLatin1String("LaunchAgents") || folder == QLatin1String("LaunchDaemons"));
}

QStringList associatedIdentifiers(const QVariantMap &launchItem)
{
    const QVariant value = launchItem.value(QStringLiteral("AssociatedBundleIdentifiers"));
    if (value.typeId() == QMetaType::QString)
        return {value.toString()};
    QStringList identifiers;
    if (value.typeId() == QMetaType::QVariantList) {
        for (const QVariant &element : value.toList()) {
            if (element.typeId() == QMetaType::QString)
                identifiers.append(element.toString());
        }
    }
    return identifiers;
}

bool hasIdentifier(const AppIdentity &app, const QString &identifier)
{
    return app.identifiers().contains(identifier, Qt::CaseInsensitive);
}

// Every shorter form of the stem that ends before a dot, longest first: a.b.c, a.b, a.
QStringList identifierPrefixes(const QString &lowerStem)
{
    QStringList prefixes{lowerStem};
    for (qsizetype dot = lowerStem.lastIndexOf(QLatin1Char('.')); dot > 0; dot = lowerStem.lastIndexOf(QLatin1Char('.'), dot - 1))
        prefixes.append(lowerStem.left(dot));
    return prefixes;
}

// The longest of a candidate's dotted prefixes that an installed app carries decides whose it is.
struct IdentifierMatch {
    bool own = false;                // the scanned app's
    const AppIdentity *app = nullptr; // another app's, by identifier
    QString identifier;              // as that app spells it
};

IdentifierMatch matchIdentifier(const Index &index, const QString &candidate, const QSet<QString> &own, const AppIdentity *scanned)
{
    for (const QString &prefix : identifierPrefixes(candidate.toLower())) {
        if (own.contains(prefix))
            return {true, nullptr, {}};
        const auto found = index.byIdentifier.constFind(prefix);
        if (found == index.byIdentifier.constEnd())
            continue;
        if (const auto at = other(*found, index, scanned)) {
            const AppIdentity &app = index.apps.at(*at);
            const QStringList identifiers = app.identifiers();
            const auto spelled = std::find_if(identifiers.cbegin(), identifiers.cend(),
                                              [&](const QString &identifier) { return identifier.compare(prefix, Qt::CaseInsensitive) == 0; });
            return {false, &app, spelled != identifiers.cend() ? *spelled : prefix};
        }
    }
    return {};
}

// What discovery already read, and the embedded bundles; the executable is left out: only the
// scanned app's is ever asked for, and reading it would parse every information list a second time.
AppIdentity knownIdentity(const InstalledApp &app)
{
    AppIdentity identity;
    identity.bundlePath = app.bundlePath();
    identity.name = app.name;
    identity.bundleIdentifier = app.bundleIdentifier;
    finish(identity);
    return identity;
}

} // namespace

QStringList AppIdentity::identifiers() const
{
    QStringList all;
    if (bundleIdentifier)
        all.append(*bundleIdentifier);
    all.append(embeddedIdentifiers);
    return all;
}

std::optional<AppIdentity> identify(const QString &bundlePath)
{
    bool isDirectory = false;
    if (!FileSystem::exists(bundlePath, &isDirectory) || !isDirectory)
        return std::nullopt;
    AppIdentity identity;
    identity.bundlePath = bundlePath;
    const QVariantMap info = bundleInfo(bundlePath).value_or(QVariantMap());
    identity.bundleIdentifier = stringValue(info, QStringLiteral("CFBundleIdentifier"));
    const QString fileName = FileSystem::fileNameWithoutExtension(bundlePath);
    identity.name = stringValue(info, QStringLiteral("CFBundleName"))
                        .value_or(stringValue(info, QStringLiteral("CFBundleDisplayName")).value_or(fileName));
    identity.executable = stringValue(info, QStringLiteral("CFBundleExecutable")).value_or(fileName);
    finish(identity);
    return identity;
}

AppIdentity identify(const InstalledApp &app)
{
    AppIdentity identity = knownIdentity(app);
    const QVariantMap info = bundleInfo(app.bundlePath()).value_or(QVariantMap());
    identity.executable = stringValue(info, QStringLiteral("CFBundleExecutable")).value_or(FileSystem::fileNameWithoutExtension(app.bundlePath()));
    return identity;
}

Index build()
{
    Index index;
    for (const char *folder : {"/Applications"})
        addFolder(index, FileSystemLayout::systemPath(QLatin1String(folder)));
    addFolder(index, FileSystemLayout::homePath(QStringLiteral("/Applications")));
    addSystemApps(index);
    return index;
}

Index build(const QList<InstalledApp> &installed)
{
    Index index;
    for (const InstalledApp &app : installed)
        add(index, knownIdentity(app));
    addSystemApps(index);
    return index;
}

QString identifierStem(const QString &name)
{
    QString stem = name;
    for (const QLatin1StringView suffix : {QLatin1StringView(".lockfile"), QLatin1StringView(".plist"),
                                           QLatin1StringView(".savedState"), QLatin1StringView(".binarycookies")}) {
        if (stem.endsWith(suffix))
            stem.chop(suffix.size());
    }
    // Recent-document lists: ".sfl", ".sfl2", ".sfl3", …
    const qsizetype sfl = stem.lastIndexOf(QLatin1String(".sfl"));
    if (sfl > 0) {
        bool digitsOnly = true;
        for (qsizetype i = sfl + 4; i < stem.size(); ++i)
            digitsOnly = digitsOnly && stem.at(i).isDigit();
        if (digitsOnly)
            stem.truncate(sfl);
    }
    // A team identifier: ten upper-case letters or digits and a dot.
    if (stem.size() > 11 && stem.at(10) == QLatin1Char('.')) {
        bool team = true;
        for (qsizetype i = 0; i < 10; ++i) {
            const char16_t c = stem.at(i).unicode();
            team = team && ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'));
        }
        if (team)
            stem = stem.mid(11);
    }
    if (stem.startsWith(QLatin1String("group.")) && stem.size() > 6)
        stem = stem.mid(6);
    return stem;
}

std::optional<qsizetype> identifierOwner(const Index &index, const QString &stem)
{
    for (const QString &prefix : identifierPrefixes(stem.toLower())) {
        const auto found = index.byIdentifier.constFind(prefix);
        if (found != index.byIdentifier.constEnd() && !found->isEmpty())
            return found->constFirst();
    }
    return std::nullopt;
}

std::optional<qsizetype> bundleOwner(const Index &index, const QString &path)
{
    // Outermost bundle first: a helper app inside another app belongs to the outer one.
    for (qsizetype end = path.indexOf(QLatin1String(".app")); end > 0; end = path.indexOf(QLatin1String(".app"), end + 4)) {
        const qsizetype after = end + 4;
        if (after != path.size() && path.at(after) != QLatin1Char('/'))
            continue;
        const QString bundle = path.left(after);
        auto found = index.byBundlePath.constFind(bundle);
        if (found == index.byBundlePath.constEnd())
            found = index.byBundlePath.constFind(FileSystemLayout::rootPrefix() + bundle);
        if (found != index.byBundlePath.constEnd())
            return *found;
    }
    return std::nullopt;
}

QStringList launchPrograms(const QVariantMap &launchItem)
{
    QStringList programs;
    if (const auto program = stringValue(launchItem, QStringLiteral("Program")))
        programs.append(*program);
    const QVariant arguments = launchItem.value(QStringLiteral("ProgramArguments"));
    if (arguments.typeId() == QMetaType::QVariantList) {
        const QVariantList list = arguments.toList();
        if (!list.isEmpty() && list.constFirst().typeId() == QMetaType::QString)
            programs.append(list.constFirst().toString());
    }
    return programs;
}

std::optional<ItemOwner> claimant(const Index &index, const QString &path, const AppIdentity *scanned)
{
    if (scanned && pointsInto(path, *scanned))
        return std::nullopt;
    std::optional<ItemOwner> claim;
    const auto claimOnce = [&](const AppIdentity &app, const QString &reason) {
        if (!claim)
            claim = ownerFor(app, reason);
    };

    const auto otherBundle = [&](const QString &inside) -> const AppIdentity * {
        const auto at = bundleOwner(index, inside);
        return at && (!scanned || index.apps.at(*at).bundlePath != scanned->bundlePath) ? &index.apps.at(*at) : nullptr;
    };

    // Whatever lies inside another app's bundle is that app, whatever its name says.
    if (const AppIdentity *app = otherBundle(path))
        return ownerFor(*app, QStringLiteral("inside %1").arg(FileSystem::lastPathComponent(app->bundlePath)));

    QSet<QString> own;
    if (scanned) {
        for (const QString &identifier : scanned->identifiers())
            own.insert(identifier.toLower());
    }

    if (isLaunchItem(path)) {
        const QVariantMap launchItem = PropertyList::readDictionary(path).value_or(QVariantMap());
        QStringList programs = launchPrograms(launchItem);
        if (const auto bundleProgram = stringValue(launchItem, QStringLiteral("BundleProgram")))
            programs.append(*bundleProgram);
        for (const QString &program : std::as_const(programs)) {
            if (scanned && pointsInto(program, *scanned))
                return std::nullopt;
            if (const AppIdentity *app = otherBundle(program))
                claimOnce(*app, QStringLiteral("its program %1 is inside %2").arg(program, FileSystem::lastPathComponent(app->bundlePath)));
        }
        // Helpers kept outside the bundle live in folders or files named by their app's identifier:
        // /Library/Application Support/com.vendor.app/updater, /Library/PrivilegedHelperTools/com.vendor.helper.
        for (const QString &program : std::as_const(programs)) {
            const QStringList components = program.split(QLatin1Char('/'), Qt::SkipEmptyParts);
            for (const QString &component : components) {
                if (!component.contains(QLatin1Char('.')))
                    continue;
                const IdentifierMatch match = matchIdentifier(index, component, own, scanned);
                if (match.own)
                    return std::nullopt;
                if (match.app)
                    claimOnce(*match.app, QStringLiteral("its program %1 is named by %2").arg(program, match.identifier));
            }
        }
        for (const QString &identifier : associatedIdentifiers(launchItem)) {
            if (scanned && hasIdentifier(*scanned, identifier))
                return std::nullopt;
            const auto found = index.byIdentifier.constFind(identifier.toLower());
            if (found != index.byIdentifier.constEnd()) {
                if (const auto at = other(*found, index, scanned))
                    claimOnce(index.apps.at(*at), QStringLiteral("it names %1 as its app").arg(identifier));
            }
        }
    }

    // Identifiers: the longest one that the stem is, or extends with a dot, decides; a tie is the
    // scanned app's.
    const QString name = FileSystem::lastPathComponent(path);
    const QString stem = identifierStem(name);
    const QString lowerStem = stem.toLower();
    const IdentifierMatch byStem = matchIdentifier(index, stem, own, scanned);
    if (byStem.own)
        return std::nullopt;
    if (const AppIdentity *app = byStem.app) {
        const bool main = app->bundleIdentifier && app->bundleIdentifier->compare(byStem.identifier, Qt::CaseInsensitive) == 0;
        claimOnce(*app, main ? QStringLiteral("named by its identifier %1").arg(byStem.identifier)
                             : QStringLiteral("named by %1, an identifier inside %2").arg(byStem.identifier, FileSystem::lastPathComponent(app->bundlePath)));
    }

    // A bundle left outside any app (an input method, a plug-in, a screen saver) says whose it is in
    // its own information list, whatever its file name says.
    if (FileSystem::isPackageExtension(FileSystem::pathExtension(name))) {
        const auto identifier = stringValue(bundleInfo(path).value_or(QVariantMap()), QStringLiteral("CFBundleIdentifier"));
        const IdentifierMatch carried = identifier ? matchIdentifier(index, *identifier, own, scanned) : IdentifierMatch();
        if (carried.own)
            return std::nullopt;
        if (carried.app) {
            claimOnce(*carried.app, carried.identifier.compare(*identifier, Qt::CaseInsensitive) == 0
                                        ? QStringLiteral("its bundle identifier is %1").arg(*identifier)
                                        : QStringLiteral("its bundle identifier %1 extends %2").arg(*identifier, carried.identifier));
        }
    }

    // A folder named exactly as an app.
    if (scanned && (scanned->name.compare(stem, Qt::CaseInsensitive) == 0
                    || FileSystem::fileNameWithoutExtension(scanned->bundlePath).compare(stem, Qt::CaseInsensitive) == 0))
        return std::nullopt;
    const auto named = index.byName.constFind(lowerStem);
    if (named != index.byName.constEnd()) {
        if (const auto at = other(*named, index, scanned))
            claimOnce(index.apps.at(*at), QStringLiteral("named as the app"));
    }

    if (!claim && !(scanned && scanned->isApple)) {
        if (lowerStem.startsWith(QLatin1String("com.apple.")))
            claim = ItemOwner{macOS, std::nullopt, QStringLiteral("in Apple's com.apple. namespace")};
        else if (lowerStem == QLatin1String("com.apple") || lowerStem == QLatin1String("apple"))
            claim = ItemOwner{macOS, std::nullopt, QStringLiteral("Apple's own folder")};
    }
    return claim;
}

} // namespace AppIdentityIndex
