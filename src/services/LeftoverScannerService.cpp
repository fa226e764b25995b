// SPDX-License-Identifier: MIT
#include "services/LeftoverScannerService.h"
#include "platform/CommandRunner.h"
#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"
#include "platform/NativePath.h"
#include "platform/PropertyList.h"
#include "platform/TextCompare.h"
#include "services/FileSizeCalculator.h"

#include <QSet>
#include <QTextBoundaryFinder>
#include <QtConcurrent>

#include <algorithm>
#include <array>
#include <functional>
#include <sys/stat.h>

namespace {

using Category = LeftoverCategory;

struct SearchContext {
    InstalledApp app;
    QString bundleID;
    QString appName;
    QStringList searchTerms;
};

using Append = std::function<void(const QString &path, Category category)>;

// Characters as a reader counts them, so that a decomposed "é" is one.
qsizetype characterCount(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() != -1)
        ++count;
    return count;
}

QString bundleFileName(const InstalledApp &app)
{
    return FileSystem::lastPathComponent(FileSystem::deletingPathExtension(app.bundlePath()));
}

QStringList searchTerms(const InstalledApp &app, const QString &bundleID)
{
    QSet<QString> terms;
    terms.insert(bundleID.toLower());
    terms.insert(app.name.toLower());
    terms.insert(bundleFileName(app).toLower());
    const QStringList pieces = bundleID.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    if (!pieces.isEmpty())
        terms.insert(pieces.constLast().toLower());
    if (pieces.size() >= 2)
        terms.insert((pieces.at(pieces.size() - 2) + QLatin1Char('.') + pieces.constLast()).toLower());
    QStringList kept;
    for (const QString &term : std::as_const(terms)) {
        if (characterCount(term) > 2)
            kept.append(term);
    }
    return kept;
}

bool matchesSearchTerms(const QString &name, const QStringList &terms)
{
    const QString lowered = name.toLower();
    // An empty term would accept every name; the fallback's terms are not length-filtered.
    return std::any_of(terms.cbegin(), terms.cend(),
                       [&](const QString &term) { return !term.isEmpty() && lowered.contains(term); });
}

// The rule that keeps whole Library folders out of a result: a name or identifier is put into a path
// only when it is one non-empty path component other than "." and "..". An empty one would name the
// folder itself (HOME/Library/Caches), ".." its parent, and one with a slash some other folder.
bool isSinglePathComponent(const QString &piece)
{
    return !piece.isEmpty() && piece != QLatin1String(".") && piece != QLatin1String("..")
        && !piece.contains(QLatin1Char('/'));
}

QString homeFolder(const char *relative)
{
    return FileSystemLayout::homePath(QLatin1String(relative));
}

QString systemFolder(const char *absolute)
{
    return FileSystemLayout::systemPath(QLatin1String(absolute));
}

// One candidate of the known-location table: a folder, the name or identifier, and a suffix. A suffix
// "." marks a prefix to look for among the folder's entries.
struct Candidate {
    QString folder;
    QString piece;
    QLatin1StringView suffix;
};

void scanKnownLocations(const SearchContext &context, const Append &append)
{
    const QString &id = context.bundleID;
    const QString &name = context.appName;
    const QString file = bundleFileName(context.app);
    const QLatin1StringView none("");
    const QLatin1StringView plist(".plist");

    const std::array<std::pair<Category, QList<Candidate>>, 13> rows = {{
        {Category::applicationSupport,
         {{homeFolder("/Library/Application Support"), name, none}, {homeFolder("/Library/Application Support"), id, none}}},
        {Category::caches,
         {{homeFolder("/Library/Caches"), id, none}, {homeFolder("/Library/Caches"), name, none}, {homeFolder("/Library/Caches"), file, none}}},
        {Category::preferences,
         {{homeFolder("/Library/Preferences"), id, plist},
          {homeFolder("/Library/Preferences"), id, QLatin1StringView(".plist.lockfile")},
          {homeFolder("/Library/Preferences/ByHost"), id, QLatin1StringView(".")}}},
        {Category::containers, {{homeFolder("/Library/Containers"), id, none}}},
        {Category::logs, {{homeFolder("/Library/Logs"), name, none}, {homeFolder("/Library/Logs"), id, none}}},
        {Category::savedState, {{homeFolder("/Library/Saved Application State"), id, QLatin1StringView(".savedState")}}},
        {Category::webKit, {{homeFolder("/Library/WebKit"), id, none}}},
        {Category::httpStorages, {{homeFolder("/Library/HTTPStorages"), id, none}}},
        {Category::plugins,
         {{homeFolder("/Library/Internet Plug-Ins"), name, QLatin1StringView(".plugin")},
          {systemFolder("/Library/Internet Plug-Ins"), name, QLatin1StringView(".plugin")}}},
        {Category::preferencePanes,
         {{homeFolder("/Library/PreferencePanes"), name, QLatin1StringView(".prefPane")},
          {systemFolder("/Library/PreferencePanes"), name, QLatin1StringView(".prefPane")}}},
        {Category::applicationSupport,
         {{systemFolder("/Library/Application Support"), name, none}, {systemFolder("/Library/Application Support"), id, none}}},
        {Category::preferences, {{systemFolder("/Library/Preferences"), id, plist}}},
        {Category::privilegedHelperTools,
         {{systemFolder("/Library/PrivilegedHelperTools"), id, none},
          {systemFolder("/Library/PrivilegedHelperTools"), id, QLatin1StringView(".helper")}}},
    }};

    for (const auto &[category, candidates] : rows) {
        for (const Candidate &candidate : candidates) {
            if (!isSinglePathComponent(candidate.piece))
                continue;
            if (candidate.suffix == QLatin1String(".")) {
                const QString prefix = candidate.piece + candidate.suffix;
                const auto entries = FileSystem::contentsOfDirectory(candidate.folder);
                if (!entries)
                    continue;
                for (const FileSystem::DirectoryEntry &entry : *entries) {
                    if (entry.name.startsWith(prefix))
                        append(entry.path, category);
                }
                continue;
            }
            append(candidate.folder + QLatin1Char('/') + candidate.piece + candidate.suffix, category);
        }
    }
}

// A launch property list belongs to the app when one of its top-level string values names it, or
// else when its file name does. Unreadable, malformed or non-dictionary lists fall back to the name.
bool launchItemMatches(const FileSystem::DirectoryEntry &entry, const QStringList &terms)
{
    const std::optional<QVariant> value = PropertyList::read(entry.path);
    if (value && value->typeId() == QMetaType::QVariantMap) {
        const QVariantMap dictionary = value->toMap();
        for (auto it = dictionary.cbegin(); it != dictionary.cend(); ++it) {
            if (it->typeId() != QMetaType::QString)
                continue;
            const QString lowered = it->toString().toLower();
            for (const QString &term : terms) {
                if (lowered.contains(term))
                    return true;
            }
        }
    }
    return matchesSearchTerms(entry.name, terms);
}

void scanLaunchItems(const SearchContext &context, const Append &append)
{
    const std::array<std::pair<Category, QString>, 3> folders = {{
        {Category::launchAgents, homeFolder("/Library/LaunchAgents")},
        {Category::launchAgents, systemFolder("/Library/LaunchAgents")},
        {Category::launchDaemons, systemFolder("/Library/LaunchDaemons")},
    }};
    for (const auto &[category, folder] : folders) {
        const auto entries = FileSystem::contentsOfDirectory(folder);
        if (!entries)
            continue;
        for (const FileSystem::DirectoryEntry &entry : *entries) {
            if (FileSystem::pathExtension(entry.name) == QLatin1String("plist")
                && launchItemMatches(entry, context.searchTerms))
                append(entry.path, category);
        }
    }
}

void scanDirectoryContents(const SearchContext &context, const Append &append)
{
    const std::array<std::pair<Category, QString>, 11> folders = {{
        {Category::groupContainers, homeFolder("/Library/Group Containers")},
        {Category::launchAgents, homeFolder("/Library/LaunchAgents")},
        {Category::launchAgents, systemFolder("/Library/LaunchAgents")},
        {Category::launchDaemons, systemFolder("/Library/LaunchDaemons")},
        {Category::plugins, homeFolder("/Library/Audio/Plug-Ins")},
        {Category::plugins, systemFolder("/Library/Audio/Plug-Ins")},
        {Category::plugins, homeFolder("/Library/Input Methods")},
        {Category::plugins, homeFolder("/Library/Services")},
        {Category::plugins, homeFolder("/Library/Scripts")},
        {Category::caches, homeFolder("/Library/Caches")},
        {Category::applicationSupport, homeFolder("/Library/Application Support")},
    }};
    for (const auto &[category, folder] : folders) {
        const auto entries = FileSystem::contentsOfDirectory(folder);
        if (!entries)
            continue;
        for (const FileSystem::DirectoryEntry &entry : *entries) {
            if (matchesSearchTerms(entry.name, context.searchTerms))
                append(entry.path, category);
        }
    }
}

Category spotlightCategory(const QString &path)
{
    static const std::array<std::pair<QLatin1StringView, Category>, 10> fragments = {{
        {QLatin1StringView("/Containers/"), Category::containers},
        {QLatin1StringView("/Group Containers/"), Category::groupContainers},
        {QLatin1StringView("/Caches/"), Category::caches},
        {QLatin1StringView("/Preferences/"), Category::preferences},
        {QLatin1StringView("/Application Support/"), Category::applicationSupport},
        {QLatin1StringView("/Logs/"), Category::logs},
        {QLatin1StringView("/LaunchAgents/"), Category::launchAgents},
        {QLatin1StringView("/LaunchDaemons/"), Category::launchDaemons},
        {QLatin1StringView("/PrivilegedHelperTools/"), Category::privilegedHelperTools},
        {QLatin1StringView("/Saved Application State/"), Category::savedState},
    }};
    for (const auto &[fragment, category] : fragments) {
        if (path.contains(fragment))
            return category;
    }
    return Category::other;
}

void scanSpotlight(const SearchContext &context, const Append &append)
{
    const QString query = QStringLiteral("kMDItemCFBundleIdentifier == '") + context.bundleID + QLatin1Char('\'');
    // An index that never answers must not hold the scan for good.
    constexpr int spotlightTimeoutMs = 30000;
    const std::optional<QString> output = CommandRunner::run(systemFolder("/usr/bin/mdfind"), {query}, spotlightTimeoutMs);
    if (!output)
        return;
    const QStringList lines = output->split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        // A name holding a line break splits into fragments; resolved against the working folder, one
        // could name any of the user's folders.
        if (line == context.app.bundlePath() || !line.startsWith(QLatin1Char('/')))
            continue;
        const QString path = FileSystem::standardizedPath(line);
        append(path, spotlightCategory(path));
    }
}

// The scan's own state: each path is considered once, stat'ed once and, when it exists, sized once.
struct Collector {
    QSet<QString> seenPaths;
    QList<LeftoverItem> items;

    void append(const QString &path, Category category)
    {
        if (seenPaths.contains(path))
            return;
        seenPaths.insert(path);
        struct stat st;
        if (path.isEmpty() || ::stat(NativePath::encode(path).constData(), &st) != 0)
            return;
        // A link counts as itself (nothing), not as what it points to: only the link moves.
        items.append(LeftoverItem::at(path, category, FileSizeCalculator::itemSize(path)));
    }
};

void appendNameBasedMatches(const InstalledApp &app, Collector &collector)
{
    const QStringList terms = {app.name.toLower(), bundleFileName(app).toLower()};
    for (const char *folder : {"/Library/Application Support", "/Library/Caches", "/Library/Logs"}) {
        const auto entries = FileSystem::contentsOfDirectory(homeFolder(folder));
        if (!entries)
            continue;
        for (const FileSystem::DirectoryEntry &entry : *entries) {
            if (!matchesSearchTerms(entry.name, terms) || collector.seenPaths.contains(entry.path))
                continue;
            collector.seenPaths.insert(entry.path);
            collector.items.append(
                LeftoverItem::at(entry.path, Category::other, FileSizeCalculator::itemSize(entry.path)));
        }
    }
}

ScanResult performScan(const InstalledApp &app)
{
    Collector collector;
    const Append append = [&collector](const QString &path, Category category) { collector.append(path, category); };
    append(app.bundlePath(), Category::application);

    if (!app.bundleIdentifier) {
        appendNameBasedMatches(app, collector);
    } else {
        const SearchContext context{app, *app.bundleIdentifier, app.name, searchTerms(app, *app.bundleIdentifier)};
        scanKnownLocations(context, append);
        scanLaunchItems(context, append);
        scanDirectoryContents(context, append);
        scanSpotlight(context, append);
    }

    std::stable_sort(collector.items.begin(), collector.items.end(),
                     [](const LeftoverItem &a, const LeftoverItem &b) {
                         return TextCompare::localizedCaseInsensitiveLess(a.path(), b.path());
                     });
    return ScanResult{collector.items};
}

} // namespace

namespace LeftoverScannerService {

QFuture<ScanResult> scan(const InstalledApp &app)
{
    return QtConcurrent::run([app] { return performScan(app); });
}

} // namespace LeftoverScannerService
