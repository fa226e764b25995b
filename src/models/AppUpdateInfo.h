// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>

#include <optional>

// An offered update: a newer version and where to get it.
struct AppUpdateInfo {
    QString version;
    QUrl downloadURL; // always absolute
    std::optional<QString> releaseNotes;

    friend bool operator==(const AppUpdateInfo &, const AppUpdateInfo &) = default;
};
