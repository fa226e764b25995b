// SPDX-License-Identifier: MIT
#include "services/LeftoverScannerService.h"
#include "platform/CommandRunner.h"
#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"
#include "platform/NativePath.h"
#include "platform/PropertyList.h"
#include "platform/TextCompare.h"
#include "services/AppIdentityIndex.h"
#include "services/FileSizeCalculator.h"

#include <QSet>
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
    // Set for the pass over an embedded identifier: only identifier-named candidates, and items say so.
    bool embedded = false;
};

using Append = std::function<void(const QString &path, Category category, FoundBy foundBy, const QString &matched)>;

QStringList searchTerms(const InstalledApp &app, const QString &bundleID)
{
    QSet<QString> terms;
    terms.insert(bundleID.toLower());
    terms.insert(app.name.toLower());
    terms.insert(FileSystem::fileNameWithoutExtension(app.bundlePath()).toLower());
    const QStringList pieces = bundleID.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    if (!pieces.isEmpty())
        terms.insert(pieces.constLast().toLower());
    if (pieces.size() >= 2)
        terms.insert((pieces.at(pieces.size() - 2) + QLatin1Char('.') + pieces.constLast()).toLower());
    QStringList kept;
    for (const QString &term : std::as_const(terms)) {
        if (TextCompare::characterCount(term) > 2)
            kept.append(term);
    }
    return kept;
}

// The longest term the text holds, the most telling of them (the terms come in no fixed order); none
// when it holds none.
std::optional<QString> matchingTerm(const QString &text, const QStringList &terms)
{
    const QString lowered = text.toLower();
    std::optional<QString> best;
    // An empty term would accept every name; the fallback's terms are not length-filtered.
    for (const QString &term : terms) {
        if (term.isEmpty() || !lowered.contains(term))
            continue;
        if (!best || term.size() > best->size() || (term.size() == best->size() && term < *best))
            best = term;
    }
    return best;
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
    const QString file = context.embedded ? QString() : FileSystem::fileNameWithoutExtension(context.app.bundlePath());
    const FoundBy foundBy = context.embedded ? FoundBy::embeddedIdentifier : FoundBy::knownLocation;
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
                        append(entry.path, category, foundBy, candidate.piece);
                }
                continue;
            }
            append(candidate.folder + QLatin1Char('/') + candidate.piece + candidate.suffix, category, foundBy, candidate.piece);
        }
    }
}

// The launch property lists of the three launch folders, in scan order, each read once per scan: the
// passes over every identifier ask them again.
struct LaunchFile {
    FileSystem::DirectoryEntry entry;
    Category category;
    std::optional<QVariant> value;
};

QList<LaunchFile> readLaunchFiles()
{
    const std::array<std::pair<Category, QString>, 3> folders = {{
        {Category::launchAgents, homeFolder("/Library/LaunchAgents")},
        {Category::launchAgents, systemFolder("/Library/LaunchAgents")},
        {Category::launchDaemons, systemFolder("/Library/LaunchDaemons")},
    }};
    QList<LaunchFile> files;
    for (const auto &[category, folder] : folders) {
        const auto entries = FileSystem::contentsOfDirectory(folder);
        if (!entries)
            continue;
        for (const FileSystem::DirectoryEntry &entry : *entries) {
            if (FileSystem::pathExtension(entry.name) == QLatin1String("plist"))
                files.append(LaunchFile{entry, category, PropertyList::read(entry.path)});
        }
    }
    return files;
}

// A launch property list belongs to the app when one of its top-level string values names it, or
// else when its file name does. Unreadable, malformed or non-dictionary lists fall back to the name.
// Gives the term that matched.
std::optional<QString> launchItemMatch(const LaunchFile &file, const QStringList &terms)
{
    const std::optional<QVariant> &value = file.value;
    if (value && value->typeId() == QMetaType::QVariantMap) {
        const QVariantMap dictionary = value->toMap();
        for (auto it = dictionary.cbegin(); it != dictionary.cend(); ++it) {
            if (it->typeId() != QMetaType::QString)
                continue;
            if (auto term = matchingTerm(it->toString(), terms))
                return term;
        }
    }
    return matchingTerm(file.entry.name, terms);
}

void scanLaunchItems(const SearchContext &context, const QList<LaunchFile> &files, const Append &append)
{
    for (const LaunchFile &file : files) {
        if (const auto term = launchItemMatch(file, context.searchTerms))
            append(file.entry.path, file.category, context.embedded ? FoundBy::embeddedIdentifier : FoundBy::launchItem, *term);
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
            if (const auto term = matchingTerm(entry.name, context.searchTerms))
                append(entry.path, category, FoundBy::folderListing, *term);
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
        append(path, spotlightCategory(path), FoundBy::spotlight, context.bundleID);
    }
}

// The scan's own state: each path is considered once, stat'ed once and, when it exists, sized once.
struct Collector {
    QSet<QString> seenPaths;
    QList<LeftoverItem> items;

    void append(const QString &path, Category category, FoundBy foundBy, const std::optional<QString> &matched)
    {
        if (seenPaths.contains(path))
            return;
        seenPaths.insert(path);
        struct stat st;
        if (path.isEmpty() || ::stat(NativePath::encode(path).constData(), &st) != 0)
            return;
        // A link counts as itself (nothing), not as what it points to: only the link moves.
        LeftoverItem item = LeftoverItem::at(path, category, FileSizeCalculator::itemSize(path));
        item.foundBy = foundBy;
        item.matched = matched;
        items.append(std::move(item));
    }
};

void appendNameBasedMatches(const InstalledApp &app, Collector &collector)
{
    const QStringList terms = {app.name.toLower(), FileSystem::fileNameWithoutExtension(app.bundlePath()).toLower()};
    for (const char *folder : {"/Library/Application Support", "/Library/Caches", "/Library/Logs"}) {
        const auto entries = FileSystem::contentsOfDirectory(homeFolder(folder));
        if (!entries)
            continue;
        for (const FileSystem::DirectoryEntry &entry : *entries) {
            const auto term = matchingTerm(entry.name, terms);
            if (!term || collector.seenPaths.contains(entry.path))
                continue;
            collector.seenPaths.insert(entry.path);
            LeftoverItem item = LeftoverItem::at(entry.path, Category::other, FileSizeCalculator::itemSize(entry.path));
            item.foundBy = FoundBy::nameMatch;
            item.matched = term;
            collector.items.append(std::move(item));
        }
    }
}

// Places the tables never look, named by an identifier or the executable.
void scanExtraLocations(const AppIdentityIndex::AppIdentity &self, const QList<LaunchFile> &launchFiles, const Append &append)
{
    const QStringList identifiers = self.identifiers();
    for (const QString &id : identifiers) {
        if (!isSinglePathComponent(id))
            continue;
        append(homeFolder("/Library/Application Scripts") + QLatin1Char('/') + id, Category::containers, FoundBy::extraLocation, id);
        append(homeFolder("/Library/Cookies") + QLatin1Char('/') + id + QLatin1String(".binarycookies"), Category::httpStorages,
               FoundBy::extraLocation, id);
        append(homeFolder("/Library/HTTPStorages") + QLatin1Char('/') + id + QLatin1String(".binarycookies"), Category::httpStorages,
               FoundBy::extraLocation, id);
    }

    // Recent documents: one list file per app, named by its identifier in lower case.
    const QString recents = homeFolder("/Library/Application Support/com.apple.sharedfilelist/"
                                       "com.apple.LSSharedFileList.ApplicationRecentDocuments");
    if (const auto entries = FileSystem::contentsOfDirectory(recents)) {
        for (const FileSystem::DirectoryEntry &entry : *entries) {
            const QString stem = AppIdentityIndex::identifierStem(entry.name);
            if (stem == entry.name || !entry.name.contains(QLatin1String(".sfl")))
                continue;
            const auto own = std::find_if(identifiers.cbegin(), identifiers.cend(),
                                          [&](const QString &id) { return id.compare(stem, Qt::CaseInsensitive) == 0; });
            if (own != identifiers.cend())
                append(entry.path, Category::other, FoundBy::extraLocation, *own);
        }
    }

    // Crash reports: "<Executable>-2024-01-01-101010.ips", "<Executable>_2024-….crash".
    if (!self.executable.isEmpty()) {
        for (const QString &folder : {homeFolder("/Library/Logs/DiagnosticReports"), systemFolder("/Library/Logs/DiagnosticReports")}) {
            const auto entries = FileSystem::contentsOfDirectory(folder);
            if (!entries)
                continue;
            for (const FileSystem::DirectoryEntry &entry : *entries) {
                const QString extension = FileSystem::pathExtension(entry.name);
                if (entry.name.size() <= self.executable.size() || !entry.name.startsWith(self.executable))
                    continue;
                const QChar separator = entry.name.at(self.executable.size());
                if ((separator == QLatin1Char('-') || separator == QLatin1Char('_'))
                    && (extension == QLatin1String("ips") || extension == QLatin1String("crash") || extension == QLatin1String("diag")))
                    append(entry.path, Category::other, FoundBy::extraLocation, self.executable);
            }
        }
    }

    // Launch items that run something inside the bundle, whatever they are called.
    const QString bundle = self.bundlePath;
    const QString prefix = FileSystemLayout::rootPrefix();
    const QString macBundle = !prefix.isEmpty() && bundle.startsWith(prefix + QLatin1Char('/')) ? bundle.mid(prefix.size()) : bundle;
    const auto inBundle = [&](const QString &program) {
        return program.startsWith(bundle + QLatin1Char('/')) || program.startsWith(macBundle + QLatin1Char('/'));
    };
    for (const LaunchFile &file : launchFiles) {
        if (!file.value || file.value->typeId() != QMetaType::QVariantMap)
            continue;
        const QStringList programs = AppIdentityIndex::launchPrograms(file.value->toMap());
        const auto program = std::find_if(programs.cbegin(), programs.cend(), inBundle);
        if (program != programs.cend())
            append(file.entry.path, file.category, FoundBy::extraLocation, *program);
    }
}

// After every other pass, so that what they find keeps the category they give it.
void scanEveryIdentifier(const SearchContext &context, const AppIdentityIndex::AppIdentity &self,
                         const QList<LaunchFile> &launchFiles, const Append &append)
{
    for (const QString &id : self.embeddedIdentifiers) {
        const SearchContext embedded{context.app, id, QString(), {id.toLower()}, true};
        scanKnownLocations(embedded, append);
        scanLaunchItems(embedded, launchFiles, append);
    }
    scanExtraLocations(self, launchFiles, append);
}

// Marks what another installed app or macOS owns; the bundle itself is the scanned app by definition.
void markClaimedItems(QList<LeftoverItem> &items, const AppIdentityIndex::AppIdentity &self, const AppIdentityIndex::Index &index)
{
    for (LeftoverItem &item : items) {
        if (item.foundBy != FoundBy::bundle)
            item.claimedBy = AppIdentityIndex::claimant(index, item.path(), &self);
        // A twin (a beta beside the release) goes by the scanned app's own name: "Belongs to Pixel Ruler"
        // would read as a contradiction, so its identifier tells the two apart.
        ItemOwner *owner = item.claimedBy ? &*item.claimedBy : nullptr;
        if (owner && owner->bundleIdentifier && owner->name.compare(self.name, Qt::CaseInsensitive) == 0)
            owner->name += QStringLiteral(" (%1)").arg(*owner->bundleIdentifier);
    }
}

ScanResult performScan(const InstalledApp &app)
{
    Collector collector;
    const Append append = [&collector](const QString &path, Category category, FoundBy foundBy, const QString &matched) {
        collector.append(path, category, foundBy, matched);
    };
    // Built beside the passes, on another pool thread when one is free; waiting for it runs it here
    // when none is.
    QFuture<AppIdentityIndex::Index> index = QtConcurrent::run([] { return AppIdentityIndex::build(); });
    collector.append(app.bundlePath(), Category::application, FoundBy::bundle, std::nullopt);
    const AppIdentityIndex::AppIdentity self = AppIdentityIndex::identify(app);

    if (!app.bundleIdentifier) {
        appendNameBasedMatches(app, collector);
    } else {
        const SearchContext context{app, *app.bundleIdentifier, app.name, searchTerms(app, *app.bundleIdentifier)};
        scanKnownLocations(context, append);
        const QList<LaunchFile> launchFiles = readLaunchFiles();
        scanLaunchItems(context, launchFiles, append);
        scanDirectoryContents(context, append);
        scanSpotlight(context, append);
        scanEveryIdentifier(context, self, launchFiles, append);
    }
    markClaimedItems(collector.items, self, index.result());

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
