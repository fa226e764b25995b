// SPDX-License-Identifier: MIT
#include "services/OrphanedLeftoverScannerService.h"

#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"
#include "platform/PropertyList.h"
#include "platform/TextCompare.h"
#include "services/AppDiscoveryService.h"
#include "services/AppIdentityIndex.h"
#include "services/FileSizeCalculator.h"
#include "services/OrphanRules.h"

#include <QHash>
#include <QSet>
#include <QtConcurrent>

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

using namespace OrphanRules;

namespace OrphanedLeftoverScannerService {

namespace {

struct InstalledAppIndex {
    QSet<QString> bundleIDs;
    QSet<QString> names;
    QSet<QString> bundleFileNames;
};

struct PreferenceIndex {
    QHash<QString, QString> nameToBundleID;
    QSet<QString> bundleIDs;
    // The listing's entry of each identifier's file.
    QHash<QString, FileSystem::DirectoryEntry> files;
};

struct MutableGroup {
    std::optional<QString> displayName;
    std::optional<QString> bundleIdentifier;
    QList<LeftoverItem> items;
};

// Groups keyed by identity, kept in recording order so that the unspecified iteration order of the
// result is at least the same on every run.
class GroupTable {
public:
    MutableGroup &operator[](const QString &key)
    {
        const auto found = m_index.constFind(key);
        if (found != m_index.constEnd())
            return m_groups[*found].second;
        m_index.insert(key, m_groups.size());
        m_groups.emplace_back(key, MutableGroup());
        return m_groups.back().second;
    }
    [[nodiscard]] bool contains(const QString &key) const { return m_index.contains(key); }
    [[nodiscard]] std::vector<std::pair<QString, MutableGroup>> &entries() { return m_groups; }

private:
    QHash<QString, size_t> m_index;
    std::vector<std::pair<QString, MutableGroup>> m_groups;
};

struct Metadata {
    QString identity;
    std::optional<QString> bundleID;
    std::optional<QString> displayName;
};

// Takes the listing's entry, which tells whether the path can still be a dangling link.
using Recorder = std::function<void(const FileSystem::DirectoryEntry &entry, LeftoverCategory category, const QString &identity,
                                    const std::optional<QString> &bundleID, const std::optional<QString> &displayName)>;

// An identifier that an installed app carries (its own or an embedded bundle's), or extends with a dot.
bool isInstalledIdentifier(const AppIdentityIndex::Index &identities, const QString &name)
{
    const QString stem = AppIdentityIndex::identifierStem(name);
    return isLikelyBundleID(stem) && AppIdentityIndex::identifierOwner(identities, stem).has_value();
}

// Everything one scan learns about the user's Library. Each preference file is read at most once and the
// cache-name matching tables are built once; the literal reading skips both shortcuts for comparison.
class SearchContext {
public:
    explicit SearchContext(bool literalReading)
        : m_literal(literalReading)
        , m_library(FileSystemLayout::homePath(QStringLiteral("/Library/")))
    {
    }

    [[nodiscard]] QString libraryFolder(const QString &name) const { return m_library + name; }
    [[nodiscard]] QString preferencePath(const QString &bundleID) const
    {
        return m_library + QStringLiteral("Preferences/") + bundleID + QStringLiteral(".plist");
    }

    std::optional<QString> displayNameFromPreferences(const QString &bundleID)
    {
        if (m_literal)
            return readDisplayName(bundleID);
        const auto found = m_displayNames.constFind(bundleID);
        if (found != m_displayNames.constEnd())
            return *found;
        const std::optional<QString> name = readDisplayName(bundleID);
        m_displayNames.insert(bundleID, name);
        return name;
    }

    void buildPreferenceIndex()
    {
        const auto entries = FileSystem::contentsOfDirectory(libraryFolder(QStringLiteral("Preferences")));
        if (!entries)
            return;
        for (const FileSystem::DirectoryEntry &entry : *entries) {
            if (FileSystem::pathExtension(entry.name) != QLatin1StringView("plist"))
                continue;
            const QString stem = FileSystem::deletingPathExtension(entry.name);
            if (!isLikelyBundleID(stem) || isSystemArtifact(stem, stem))
                continue;
            preferences.bundleIDs.insert(stem);
            preferences.files.insert(stem, entry);
            if (const auto name = displayNameFromPreferences(stem))
                preferences.nameToBundleID.insert(name->toLower(), stem);
            if (const auto tail = nameFromIdentifierTail(stem))
                preferences.nameToBundleID.insert(*tail, stem);
        }
        if (!m_literal)
            prepareMatching();
    }

    std::optional<QString> matchingBundleID(const QString &name)
    {
        if (preferences.bundleIDs.contains(name))
            return name;
        if (m_literal)
            return literalMatchingBundleID(name);
        // The longest identifier that is a prefix of the name: at most one per length.
        for (const qsizetype length : std::as_const(m_candidateLengths)) {
            if (length > name.size())
                continue;
            const QString prefix = name.left(length);
            if (preferences.bundleIDs.contains(prefix))
                return prefix;
        }
        const QString normalized = normalizedName(name);
        // The earliest candidate (longest first) whose normalised display name occurs in the name.
        qsizetype best = -1;
        for (const qsizetype length : std::as_const(m_displayLengths)) {
            for (qsizetype start = 0; start + length <= normalized.size(); ++start) {
                const auto found = m_rankByDisplay.constFind(normalized.mid(start, length));
                if (found != m_rankByDisplay.constEnd() && (best < 0 || *found < best))
                    best = *found;
            }
        }
        if (best >= 0)
            return m_candidates.at(best);
        return std::nullopt;
    }

    Metadata resolveMetadata(const std::optional<QString> &bundleID, const std::optional<QString> &displayName)
    {
        if (bundleID)
            return {*bundleID, bundleID, displayName ? displayName : displayNameFromPreferences(*bundleID)};
        if (displayName) {
            const auto found = preferences.nameToBundleID.constFind(displayName->toLower());
            if (found != preferences.nameToBundleID.constEnd())
                return {*found, *found, displayName};
            return {QStringLiteral("name:") + displayName->toLower(), std::nullopt, displayName};
        }
        return {QStringLiteral("name:unknown"), std::nullopt, std::nullopt};
    }

    PreferenceIndex preferences;

private:
    std::optional<QString> readDisplayName(const QString &bundleID) const
    {
        const auto dictionary = PropertyList::readDictionary(preferencePath(bundleID));
        if (!dictionary)
            return std::nullopt;
        for (const QLatin1StringView key : {QLatin1StringView("CFBundleDisplayName"), QLatin1StringView("CFBundleName")}) {
            const QVariant value = dictionary->value(key);
            if (value.typeId() == QMetaType::QString && !value.toString().isEmpty())
                return value.toString();
        }
        return std::nullopt;
    }

    // Longest first; equal lengths in code-unit order, so the choice between them is repeatable.
    [[nodiscard]] QStringList orderedCandidates() const
    {
        QStringList candidates(preferences.bundleIDs.cbegin(), preferences.bundleIDs.cend());
        std::sort(candidates.begin(), candidates.end(), [](const QString &a, const QString &b) {
            return a.size() != b.size() ? a.size() > b.size() : a < b;
        });
        return candidates;
    }

    std::optional<QString> literalMatchingBundleID(const QString &name)
    {
        const QStringList candidates = orderedCandidates();
        for (const QString &candidate : candidates) {
            if (name.startsWith(candidate))
                return candidate;
        }
        const QString normalized = normalizedName(name);
        for (const QString &candidate : candidates) {
            const auto display = displayNameFromPreferences(candidate);
            if (!display)
                continue;
            const QString wanted = normalizedName(*display);
            if (wanted.size() >= 4 && normalized.contains(wanted))
                return candidate;
        }
        return std::nullopt;
    }

    void prepareMatching()
    {
        m_candidates = orderedCandidates();
        QSet<qsizetype> lengths;
        QSet<qsizetype> displayLengths;
        for (qsizetype rank = 0; rank < m_candidates.size(); ++rank) {
            lengths.insert(m_candidates.at(rank).size());
            const auto display = displayNameFromPreferences(m_candidates.at(rank));
            if (!display)
                continue;
            const QString wanted = normalizedName(*display);
            if (wanted.size() < 4 || m_rankByDisplay.contains(wanted))
                continue;
            m_rankByDisplay.insert(wanted, rank);
            displayLengths.insert(wanted.size());
        }
        m_candidateLengths = QList<qsizetype>(lengths.cbegin(), lengths.cend());
        std::sort(m_candidateLengths.begin(), m_candidateLengths.end(), std::greater<>());
        m_displayLengths = QList<qsizetype>(displayLengths.cbegin(), displayLengths.cend());
    }

    const bool m_literal;
    const QString m_library;
    QHash<QString, std::optional<QString>> m_displayNames;
    QStringList m_candidates;
    QList<qsizetype> m_candidateLengths;
    QHash<QString, qsizetype> m_rankByDisplay;
    QList<qsizetype> m_displayLengths;
};

InstalledAppIndex buildIndex(const QList<InstalledApp> &apps)
{
    InstalledAppIndex index;
    for (const InstalledApp &app : apps) {
        if (app.bundleIdentifier)
            index.bundleIDs.insert(app.bundleIdentifier->toLower());
        index.names.insert(app.name.toLower());
        const QString fileName = FileSystem::fileNameWithoutExtension(app.bundlePath()).toLower();
        index.names.insert(fileName);
        index.bundleFileNames.insert(fileName);
    }
    return index;
}

// Runs rule on every visible entry of one Library folder; a folder that cannot be listed adds nothing.
template<typename Rule>
void forEachEntry(const SearchContext &context, const QString &folderName, Rule rule)
{
    const auto entries = FileSystem::contentsOfDirectory(context.libraryFolder(folderName));
    if (!entries)
        return;
    for (const FileSystem::DirectoryEntry &entry : *entries)
        rule(entry);
}

void scanContainers(SearchContext &context, const Recorder &addItem)
{
    forEachEntry(context, QStringLiteral("Containers"), [&](const FileSystem::DirectoryEntry &entry) {
        if (isLikelyBundleID(entry.name))
            addItem(entry, LeftoverCategory::containers, entry.name, entry.name,
                    context.displayNameFromPreferences(entry.name));
    });
}

void scanCaches(SearchContext &context, const Recorder &addItem)
{
    forEachEntry(context, QStringLiteral("Caches"), [&](const FileSystem::DirectoryEntry &entry) {
        const auto bundleID = context.matchingBundleID(entry.name);
        if (!bundleID)
            return;
        const Metadata metadata = context.resolveMetadata(bundleID, context.displayNameFromPreferences(*bundleID));
        addItem(entry, LeftoverCategory::caches, metadata.identity, metadata.bundleID, metadata.displayName);
    });
}

void scanApplicationSupport(SearchContext &context, const InstalledAppIndex &index, const Recorder &addItem)
{
    forEachEntry(context, QStringLiteral("Application Support"), [&](const FileSystem::DirectoryEntry &entry) {
        const QString lower = entry.name.toLower();
        if (isExcludedFolderName(lower) || index.names.contains(lower))
            return;
        if (isLikelyBundleID(entry.name)) {
            addItem(entry, LeftoverCategory::applicationSupport, entry.name, entry.name,
                    context.displayNameFromPreferences(entry.name));
            return;
        }
        const auto found = context.preferences.nameToBundleID.constFind(lower);
        if (found != context.preferences.nameToBundleID.constEnd())
            addItem(entry, LeftoverCategory::applicationSupport, *found, *found, entry.name);
    });
}

void scanSavedState(SearchContext &context, const Recorder &addItem)
{
    static const QLatin1StringView suffix(".savedState");
    forEachEntry(context, QStringLiteral("Saved Application State"), [&](const FileSystem::DirectoryEntry &entry) {
        if (!entry.name.endsWith(suffix))
            return;
        const QString base = entry.name.chopped(suffix.size());
        if (isLikelyBundleID(base)) {
            addItem(entry, LeftoverCategory::savedState, base, base, context.displayNameFromPreferences(base));
            return;
        }
        const auto found = context.preferences.nameToBundleID.constFind(base.toLower());
        if (found != context.preferences.nameToBundleID.constEnd())
            addItem(entry, LeftoverCategory::savedState, *found, *found, base);
    });
}

void scanWebKitAndHTTP(SearchContext &context, const Recorder &addItem)
{
    for (const auto &[folder, category] : {std::pair(QStringLiteral("WebKit"), LeftoverCategory::webKit),
                                           std::pair(QStringLiteral("HTTPStorages"), LeftoverCategory::httpStorages)}) {
        forEachEntry(context, folder, [&, category = category](const FileSystem::DirectoryEntry &entry) {
            if (isLikelyBundleID(entry.name))
                addItem(entry, category, entry.name, entry.name, context.displayNameFromPreferences(entry.name));
        });
    }
}

void scanGroupContainers(SearchContext &context, const Recorder &addItem)
{
    forEachEntry(context, QStringLiteral("Group Containers"), [&](const FileSystem::DirectoryEntry &entry) {
        const auto bundleID = extractBundleIDFromGroupContainer(entry.name);
        const auto displayName = bundleID ? context.displayNameFromPreferences(*bundleID) : std::nullopt;
        const Metadata metadata = context.resolveMetadata(bundleID, displayName);
        addItem(entry, LeftoverCategory::groupContainers, metadata.identity, metadata.bundleID, metadata.displayName);
    });
}

// Launch items whose program lies in an app bundle that is gone: that app's leftovers, by the bundle's name.
// Each recorded item's program goes into programs, as what matched.
void scanLaunchItems(SearchContext &context, const AppIdentityIndex::Index &identities, const Recorder &addItem,
                     QHash<QString, QString> &programs)
{
    const std::array<std::pair<QString, LeftoverCategory>, 3> folders = {{
        {FileSystemLayout::homePath(QStringLiteral("/Library/LaunchAgents")), LeftoverCategory::launchAgents},
        {FileSystemLayout::systemPath(QStringLiteral("/Library/LaunchAgents")), LeftoverCategory::launchAgents},
        {FileSystemLayout::systemPath(QStringLiteral("/Library/LaunchDaemons")), LeftoverCategory::launchDaemons},
    }};
    for (const auto &[folder, category] : folders) {
        const auto entries = FileSystem::contentsOfDirectory(folder);
        if (!entries)
            continue;
        for (const FileSystem::DirectoryEntry &entry : *entries) {
            if (FileSystem::pathExtension(entry.name) != QLatin1StringView("plist"))
                continue;
            const auto launchItem = PropertyList::readDictionary(entry.path);
            if (!launchItem)
                continue;
            for (const QString &program : AppIdentityIndex::launchPrograms(*launchItem)) {
                const qsizetype end = program.indexOf(QLatin1StringView(".app/"));
                if (!program.startsWith(QLatin1Char('/')) || end < 0)
                    continue;
                const QString bundle = program.left(end + 4);
                if (FileSystem::exists(FileSystemLayout::systemPath(bundle)) || AppIdentityIndex::bundleOwner(identities, bundle))
                    continue;
                const QString name = FileSystem::fileNameWithoutExtension(bundle);
                if (name.isEmpty() || identities.byName.contains(name.toLower()))
                    continue;
                const Metadata metadata = context.resolveMetadata(std::nullopt, name);
                addItem(entry, category, metadata.identity, metadata.bundleID, metadata.displayName);
                programs.insert(entry.path, program);
                break;
            }
        }
    }
}

// Application Scripts folders and cookie files join the group of the identifier that names them.
void scanScriptsAndCookies(SearchContext &context, const GroupTable &groups, const Recorder &addItem)
{
    for (const auto &place : {std::pair(QStringLiteral("Application Scripts"), LeftoverCategory::containers),
                              std::pair(QStringLiteral("Cookies"), LeftoverCategory::httpStorages)}) {
        const LeftoverCategory category = place.second;
        forEachEntry(context, place.first, [&](const FileSystem::DirectoryEntry &entry) {
            const QString stem = AppIdentityIndex::identifierStem(entry.name);
            if (category == LeftoverCategory::httpStorages && !entry.name.endsWith(QLatin1StringView(".binarycookies")))
                return;
            if (groups.contains(stem))
                addItem(entry, category, stem, stem, context.displayNameFromPreferences(stem));
        });
    }
}

void scanPreferenceFiles(SearchContext &context, const GroupTable &groups, const Recorder &addItem)
{
    // The keys as they stand now: recording below adds no new group.
    for (const QString &bundleID : std::as_const(context.preferences.bundleIDs)) {
        if (!groups.contains(bundleID))
            continue;
        const auto file = context.preferences.files.constFind(bundleID);
        if (file != context.preferences.files.constEnd())
            addItem(*file, LeftoverCategory::preferences, bundleID, bundleID, context.displayNameFromPreferences(bundleID));
    }
}

bool isOrphaned(const MutableGroup &group, const InstalledAppIndex &index)
{
    if (group.bundleIdentifier) {
        const QString lower = group.bundleIdentifier->toLower();
        if (index.bundleIDs.contains(lower))
            return false;
        // An installed "com.example.app" claims "com.example.app.cache": test each prefix ending before a dot.
        for (qsizetype dot = lower.indexOf(QLatin1Char('.')); dot >= 0; dot = lower.indexOf(QLatin1Char('.'), dot + 1)) {
            if (index.bundleIDs.contains(lower.left(dot)))
                return false;
        }
    }
    if (group.displayName && index.names.contains(group.displayName->toLower()))
        return false;
    for (const LeftoverItem &item : group.items) {
        const QString stem = FileSystem::fileNameWithoutExtension(item.path()).toLower();
        if (index.bundleFileNames.contains(stem) || index.names.contains(stem))
            return false;
    }
    return true;
}

QList<LeftoverCategory> categoriesOf(const MutableGroup &group)
{
    QList<LeftoverCategory> categories;
    categories.reserve(group.items.size());
    for (const LeftoverItem &item : group.items)
        categories.append(item.category);
    return categories;
}

} // namespace

namespace {

// What the folder passes gather before any group is judged.
struct Candidates {
    GroupTable groups;
    // Launch items recorded by their program path: the program is what matched.
    QHash<QString, QString> launchPrograms;
};

Candidates collectCandidates(SearchContext &context, const InstalledAppIndex &index,
                             const AppIdentityIndex::Index &identities)
{
    Candidates found;
    GroupTable &groups = found.groups;
    QSet<QString> seenPaths;
    QHash<QString, bool> installedIdentifiers;
    const Recorder addItem = [&](const FileSystem::DirectoryEntry &entry, LeftoverCategory category, const QString &identity,
                                 const std::optional<QString> &bundleID, const std::optional<QString> &displayName) {
        const QString &path = entry.path;
        if (seenPaths.contains(path))
            return;
        // Marked seen even when rejected below, so a path is judged once.
        seenPaths.insert(path);
        if (entry.mayBeLink && !FileSystem::exists(path))
            return;
        const QString name = FileSystem::lastPathComponent(path);
        if (isSystemArtifact(bundleID, displayName.value_or(name)))
            return;
        // Another installed app's, by its own or an embedded identifier: no group, and none to join. Many
        // entries share an identifier, so each is judged once.
        const QString &claimed = bundleID ? *bundleID : name;
        auto judged = installedIdentifiers.constFind(claimed);
        if (judged == installedIdentifiers.constEnd())
            judged = installedIdentifiers.insert(claimed, isInstalledIdentifier(identities, claimed));
        if (*judged)
            return;
        MutableGroup &group = groups[identity];
        if (!group.displayName)
            group.displayName = displayName;
        if (!group.bundleIdentifier)
            group.bundleIdentifier = bundleID;
        // Sized only once its group survives: sizes play no part in the decisions before that.
        LeftoverItem item = LeftoverItem::at(path, category, 0);
        const bool byLaunchItem = category == LeftoverCategory::launchAgents || category == LeftoverCategory::launchDaemons;
        item.foundBy = byLaunchItem ? FoundBy::launchItem : FoundBy::folderListing;
        item.matched = bundleID ? bundleID : displayName;
        group.items.append(std::move(item));
    };

    scanContainers(context, addItem);
    scanCaches(context, addItem);
    scanApplicationSupport(context, index, addItem);
    scanSavedState(context, addItem);
    scanWebKitAndHTTP(context, addItem);
    scanGroupContainers(context, addItem);
    scanLaunchItems(context, identities, addItem, found.launchPrograms);
    scanPreferenceFiles(context, groups, addItem);
    scanScriptsAndCookies(context, groups, addItem);
    return found;
}

// Groups found by a name alone join the group of the identifier that name's preferences give.
GroupTable mergeByIdentifier(GroupTable &groups, const SearchContext &context)
{
    GroupTable merged;
    for (auto &[key, group] : groups.entries()) {
        std::optional<QString> named;
        if (group.displayName) {
            const auto found = context.preferences.nameToBundleID.constFind(group.displayName->toLower());
            if (found != context.preferences.nameToBundleID.constEnd())
                named = *found;
        }
        MutableGroup &target = merged[group.bundleIdentifier.value_or(named.value_or(key))];
        if (!target.displayName)
            target.displayName = group.displayName;
        if (!target.bundleIdentifier)
            target.bundleIdentifier = group.bundleIdentifier ? group.bundleIdentifier : named;
        target.items.append(std::move(group.items));
    }
    return merged;
}

// The group as reported, or none when an installed app explains it or the evidence grades no confidence.
std::optional<OrphanedAppGroup> judgeGroup(const QString &key, MutableGroup &group, const InstalledAppIndex &index,
                                           SearchContext &context, const QHash<QString, QString> &launchPrograms)
{
    if (group.items.isEmpty() || !isOrphaned(group, index))
        return std::nullopt;
    if (looksLikeComponent(group.bundleIdentifier, group.displayName.value_or(key)))
        return std::nullopt;
    const QList<LeftoverCategory> categories = categoriesOf(group);
    const auto confidence = evaluateConfidence(group.bundleIdentifier.has_value(), categories);
    if (!confidence)
        return std::nullopt;
    std::optional<QString> displayName = group.displayName;
    if (!displayName && group.bundleIdentifier)
        displayName = context.displayNameFromPreferences(*group.bundleIdentifier);
    QList<LeftoverItem> items = std::move(group.items);
    for (LeftoverItem &item : items) {
        item.size = FileSizeCalculator::quickItemSize(item.path());
        if (const auto program = launchPrograms.constFind(item.path()); program != launchPrograms.constEnd())
            item.matched = *program;
    }
    std::stable_sort(items.begin(), items.end(), [](const LeftoverItem &a, const LeftoverItem &b) {
        return TextCompare::localizedCaseInsensitiveLess(a.path(), b.path());
    });
    return OrphanedAppGroup{key, displayName.value_or(displayNameFromKey(key)), group.bundleIdentifier,
                            *confidence, evidenceSummary(*confidence, categories), items};
}

} // namespace

QList<OrphanedAppGroup> performScan(bool literalReading)
{
    const QList<InstalledApp> installed = AppDiscoveryService::discoverInstalledApps();
    const InstalledAppIndex index = buildIndex(installed);
    const AppIdentityIndex::Index identities = AppIdentityIndex::build(installed);
    SearchContext context(literalReading);
    context.buildPreferenceIndex();

    Candidates candidates = collectCandidates(context, index, identities);
    GroupTable merged = mergeByIdentifier(candidates.groups, context);
    QList<OrphanedAppGroup> result;
    for (auto &[key, group] : merged.entries()) {
        if (auto judged = judgeGroup(key, group, index, context, candidates.launchPrograms))
            result.append(std::move(*judged));
    }
    sortGroups(result);
    return result;
}

QFuture<QList<OrphanedAppGroup>> scan()
{
    return QtConcurrent::run([] { return performScan(); });
}

} // namespace OrphanedLeftoverScannerService
