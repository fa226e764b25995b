// SPDX-License-Identifier: MIT
#pragma once

#include "models/LeftoverCategory.h"

#include <QHashFunctions>
#include <QString>
#include <QUrl>

// One file or folder found by a scan. Its identity, `id`, is the exact path string: QUrl cannot carry
// file names that are not UTF-8, so `path()` reads the id, never the URL.
struct LeftoverItem {
    QString id;
    QUrl url;
    LeftoverCategory category = LeftoverCategory::other;
    qint64 size = 0;

    // The usual way to make one: id and URL from the same path.
    [[nodiscard]] static LeftoverItem at(const QString &path, LeftoverCategory category, qint64 size);

    [[nodiscard]] QString name() const;
    [[nodiscard]] const QString &path() const { return id; }
    [[nodiscard]] QString formattedSize() const;
    // System-level categories, or anything under the system's /Library (not the user's).
    [[nodiscard]] bool requiresAdmin() const;

    friend bool operator==(const LeftoverItem &, const LeftoverItem &) = default;
};

size_t qHash(const LeftoverItem &item, size_t seed = 0);
