// SPDX-License-Identifier: MIT
#pragma once

#include "models/AppUpdateInfo.h"

#include <QFuture>
#include <QString>
#include <QUrl>

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

// Never fails and never blocks the caller: the future holds the offered update, or nothing.
[[nodiscard]] QFuture<std::optional<AppUpdateInfo>> checkForUpdate(const QUrl &feed = feedURL(),
                                                                   std::chrono::milliseconds timeout = defaultTimeout);

[[nodiscard]] bool isVersionNewerThan(const QString &candidate, const QString &reference);

} // namespace UpdateCheckService
