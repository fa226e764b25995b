// SPDX-License-Identifier: MIT
#include "services/DeletionService.h"

#include "platform/TextCompare.h"
#include "platform/Trash.h"

#include <algorithm>

namespace DeletionService {

namespace {

// GIO resolves a relative path against the working folder and folds ".." without looking at the disk
// (g_file_new_for_path, https://docs.gtk.org/glib/func.canonicalize_filename.html), so such an id could
// name something other than what the user saw; only plain absolute paths are handed over.
bool isPlainAbsolutePath(const QString &path)
{
    if (!path.startsWith(QLatin1Char('/')) || path == QLatin1String("/"))
        return false;
    const auto components = QStringView(path).split(QLatin1Char('/'));
    return std::none_of(components.begin(), components.end(), [](QStringView component) {
        return component == QLatin1String(".") || component == QLatin1String("..");
    });
}

} // namespace

QList<LeftoverItem> processingOrder(const QList<LeftoverItem> &items)
{
    QList<std::pair<qsizetype, LeftoverItem>> keyed;
    keyed.reserve(items.size());
    for (const LeftoverItem &item : items)
        keyed.append({TextCompare::characterCount(item.path()), item});
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto &a, const auto &b) { return a.first > b.first; });
    QList<LeftoverItem> ordered;
    ordered.reserve(keyed.size());
    for (auto &entry : keyed)
        ordered.append(std::move(entry.second));
    return ordered;
}

DeletionReport moveToTrash(const QList<LeftoverItem> &items)
{
    DeletionReport report;
    for (const LeftoverItem &item : processingOrder(items)) {
        if (!isPlainAbsolutePath(item.path())) {
            report.failed.append({item, QStringLiteral("“%1” is not an absolute path, so it was not moved to the Trash.")
                                            .arg(item.path())});
            continue;
        }
        QString error;
        QString trashedPath;
        if (Trash::moveToTrash(item.path(), &error, &trashedPath)) {
            report.deleted.append(item);
            report.trashedPaths.append(trashedPath);
        } else {
            report.failed.append({item, error});
        }
    }
    return report;
}

QList<TrashedItem> trashedItems(const DeletionReport &report)
{
    QList<TrashedItem> items;
    for (qsizetype index = 0; index < report.deleted.size(); ++index)
        items.append({report.deleted.at(index), report.trashedPaths.value(index)});
    return items;
}

RestoreReport putBack(const QList<TrashedItem> &items)
{
    // Shortest path first, the reverse of the Trash run, so a folder is back before what it held.
    QList<std::pair<qsizetype, TrashedItem>> keyed;
    for (const TrashedItem &entry : items)
        keyed.append({TextCompare::characterCount(entry.item.path()), entry});
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto &a, const auto &b) { return a.first < b.first; });

    RestoreReport report;
    for (const auto &keyedEntry : keyed) {
        const TrashedItem &entry = keyedEntry.second;
        QString error;
        if (entry.trashedPath.isEmpty())
            report.failed.append({entry.item, QStringLiteral("Where the Trash keeps this item is not known.")});
        else if (Trash::putBack(entry.trashedPath, entry.item.path(), &error))
            report.restored.append(entry.item);
        else
            report.failed.append({entry.item, error});
    }
    return report;
}

} // namespace DeletionService
