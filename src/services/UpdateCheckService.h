// SPDX-License-Identifier: MIT
#pragma once

#include "models/AppUpdateInfo.h"

#include <QFuture>
#include <QString>
#include <QUrl>
#include <QVariantMap>

#include <chrono>
#include <optional>

// Asks the release feed whether a newer version of this program exists.
namespace UpdateCheckService {

// The name of the "check for updates" request that the menu command posts.
inline constexpr char checkForUpdatesNotification[] = "KestruneCheckForUpdates";
inline constexpr std::chrono::milliseconds defaultTimeout{12000};

[[nodiscard]] QUrl defaultFeedURL();
// The feed named in the program's own information list, else the default.
[[nodiscard]] QUrl feedURL();
// The running version, or "0".
[[nodiscard]] QString currentVersion();

// Never fails and never blocks the caller: the future holds the offered update, or nothing, within
// the timeout, however the server answers.
[[nodiscard]] QFuture<std::optional<AppUpdateInfo>> checkForUpdate(const QUrl &feed = feedURL(),
                                                                   std::chrono::milliseconds timeout = defaultTimeout);

// A feed body larger than this is not a release manifest; reading stops there.
inline constexpr qint64 maximumFeedBytes = 1024 * 1024;

// The program's own information list: the generated Info.plist, compiled in (the bundle holds the same file).
[[nodiscard]] std::optional<QVariantMap> ownInformation();
// feedURL() and currentVersion() read from the given list (absent: there is none).
[[nodiscard]] QUrl feedURLFrom(const std::optional<QVariantMap> &information);
[[nodiscard]] QString currentVersionFrom(const std::optional<QVariantMap> &information);

[[nodiscard]] bool isVersionNewerThan(const QString &candidate, const QString &reference);

// The feed is only ever asked over HTTP(S).
[[nodiscard]] bool isFeedScheme(const QString &scheme);
// A download is offered only at an https address, or an http one when the feed itself is plain http.
[[nodiscard]] bool isOfferedDownload(const QUrl &feed, const QUrl &download);

} // namespace UpdateCheckService
