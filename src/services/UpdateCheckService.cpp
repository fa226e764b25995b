// SPDX-License-Identifier: MIT
#include "services/UpdateCheckService.h"

#include <QtConcurrent>

namespace UpdateCheckService {

QUrl defaultFeedURL()
{
    return QUrl();
}

QUrl feedURL()
{
    return defaultFeedURL();
}

QString currentVersion()
{
    return QStringLiteral("0");
}

QFuture<std::optional<AppUpdateInfo>> checkForUpdate(const QUrl &feed, std::chrono::milliseconds timeout)
{
    Q_UNUSED(feed)
    Q_UNUSED(timeout)
    return QtConcurrent::run([] { return std::optional<AppUpdateInfo>(); });
}

bool isVersionNewerThan(const QString &candidate, const QString &reference)
{
    Q_UNUSED(candidate)
    Q_UNUSED(reference)
    return false;
}

} // namespace UpdateCheckService
