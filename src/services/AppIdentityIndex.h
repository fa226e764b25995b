// SPDX-License-Identifier: MIT
#pragma once

#include "models/InstalledApp.h"
#include "models/LeftoverItem.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

// Who is installed, under every identifier they carry, and which of them owns a given file. Both scans
// build one index per run, off the main thread; it reads information lists only, never sizes anything.
namespace AppIdentityIndex {

struct AppIdentity {
    QString name;
    QString bundlePath; // as found, under the root
    QString executable;
    std::optional<QString> bundleIdentifier;
    // Extensions, login items, XPC services, helpers and privileged helpers, without the main one.
    QStringList embeddedIdentifiers;
    // Apple's own: under /System, or in the com.apple. namespace. Owned by "macOS".
    bool isApple = false;

    [[nodiscard]] QStringList identifiers() const;
};

struct Index {
    QList<AppIdentity> apps;
    QHash<QString, QList<qsizetype>> byIdentifier; // lower-cased identifier -> apps
    QHash<QString, QList<qsizetype>> byName;       // lower-cased name and bundle file name -> apps
    QHash<QString, qsizetype> byBundlePath;        // the bundle path, and the same as the Mac sees it
};

// One bundle's identity from its information list and the bundles inside it; absent when the path is
// no folder.
[[nodiscard]] std::optional<AppIdentity> identify(const QString &bundlePath);
// The same for a discovered app, keeping the name and identifier discovery gave it.
[[nodiscard]] AppIdentity identify(const InstalledApp &app);

// Every app discovery lists (found again here, without sizes) and Apple's under /System.
[[nodiscard]] Index build();
// The given apps, already discovered, and Apple's under /System.
[[nodiscard]] Index build(const QList<InstalledApp> &installed);

// The name without what only decorates an identifier: ".plist", ".lockfile", ".savedState",
// ".binarycookies", ".sfl*", a team prefix "ABCDE12345." and "group.".
[[nodiscard]] QString identifierStem(const QString &name);
// The app whose identifier the stem is, or extends with a dot; the longest identifier wins.
[[nodiscard]] std::optional<qsizetype> identifierOwner(const Index &index, const QString &stem);
// The app whose bundle holds this path (an absolute Mac path or one under the root).
[[nodiscard]] std::optional<qsizetype> bundleOwner(const Index &index, const QString &path);
// A launch property list's program paths: Program and ProgramArguments[0].
[[nodiscard]] QStringList launchPrograms(const QVariantMap &launchItem);

// Whether another installed app, or macOS, owns the file at path, by exact evidence only. The scanned
// app's own evidence wins; nullptr when no app is being scanned.
[[nodiscard]] std::optional<ItemOwner> claimant(const Index &index, const QString &path, const AppIdentity *scanned);

} // namespace AppIdentityIndex
