// SPDX-License-Identifier: MIT
#pragma once

#include <QHashFunctions>
#include <QString>
#include <QUrl>

#include <optional>

// One application bundle the user may remove.
struct InstalledApp {
    QString id; // the bundle's path; see LeftoverItem for why paths are read from the id
    QString name;
    QUrl path;
    std::optional<QString> bundleIdentifier;
    qint64 size = 0;

    // Reads the bundle's information list and sizes it. Absent only when the extension is not
    // exactly "app". Does file work: call it off the main thread.
    [[nodiscard]] static std::optional<InstalledApp> from(const QString &appPath);
    [[nodiscard]] static std::optional<InstalledApp> from(const QUrl &appUrl) { return from(appUrl.toLocalFile()); }

    [[nodiscard]] const QString &bundlePath() const { return id; }
    [[nodiscard]] QString formattedSize() const;

    friend bool operator==(const InstalledApp &, const InstalledApp &) = default;
};

size_t qHash(const InstalledApp &app, size_t seed = 0);
