// SPDX-License-Identifier: MIT
#pragma once

#include "models/LeftoverCategory.h"

#include <QHashFunctions>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

// Which pass of a scan reached an item. The raw values are the command line's `foundBy` texts.
enum class FoundBy {
    bundle,
    knownLocation,
    folderListing,
    launchItem,
    spotlight,
    nameMatch,
    embeddedIdentifier,
    extraLocation,
};

namespace FoundByValues {
[[nodiscard]] QString rawValue(FoundBy foundBy);
}

// Another installed app, or macOS, that an item belongs to, and the evidence for it.
struct ItemOwner {
    QString name; // "macOS" for the system
    std::optional<QString> bundleIdentifier;
    QString reason;

    [[nodiscard]] bool isSystem() const { return name == QLatin1String("macOS"); }
    // "Belongs to ForkLift" or "Part of macOS".
    [[nodiscard]] QString label() const;

    friend bool operator==(const ItemOwner &, const ItemOwner &) = default;
};

// One file or folder found by a scan. Its identity, `id`, is the exact path string: QUrl cannot carry
// file names that are not UTF-8, so `path()` reads the id, never the URL.
struct LeftoverItem {
    QString id;
    QUrl url;
    LeftoverCategory category = LeftoverCategory::other;
    qint64 size = 0;
    FoundBy foundBy = FoundBy::folderListing;
    // The term, identifier or program path that matched; absent for the bundle itself.
    std::optional<QString> matched;
    // Set when another installed app or macOS owns the item: it is listed but not ticked by default.
    std::optional<ItemOwner> claimedBy;

    // The usual way to make one: id and URL from the same path.
    [[nodiscard]] static LeftoverItem at(const QString &path, LeftoverCategory category, qint64 size);

    [[nodiscard]] QString name() const;
    [[nodiscard]] const QString &path() const { return id; }
    [[nodiscard]] QString formattedSize() const;
    // System-level categories, or anything under the system's /Library (not the user's).
    [[nodiscard]] bool requiresAdmin() const;
    // Ticked when a scan ends: everything nobody else claims.
    [[nodiscard]] bool isSelectedByDefault() const { return !claimedBy.has_value(); }
    // "found by known location: com.acme.notes", for tooltips and --why.
    [[nodiscard]] QString howFound() const;

    friend bool operator==(const LeftoverItem &, const LeftoverItem &) = default;
};

size_t qHash(const LeftoverItem &item, size_t seed = 0);

namespace LeftoverItems {
[[nodiscard]] qint64 totalSize(const QList<LeftoverItem> &items);
// "3 items • 2 KB", as a sidebar row and a category's header show a set of items. The plural stays
// "items" for one item too: the window's texts read that way.
[[nodiscard]] QString countAndSize(qsizetype count, qint64 size);
}
