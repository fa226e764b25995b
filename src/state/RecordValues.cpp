// SPDX-License-Identifier: MIT
#include "state/RecordValues.h"

#include "platform/ByteCountFormatter.h"

AppValue::AppValue(const std::optional<InstalledApp> &app)
{
    if (!app)
        return;
    valid = true;
    id = app->id;
    name = app->name;
    path = app->path;
    bundleIdentifier = app->bundleIdentifier.value_or(QString());
    size = app->size;
    formattedSize = app->formattedSize();
}

OrphanGroupValue::OrphanGroupValue(const std::optional<OrphanedAppGroup> &group)
{
    if (!group)
        return;
    valid = true;
    id = group->id;
    displayName = group->displayName;
    bundleIdentifier = group->bundleIdentifier.value_or(QString());
    confidence = OrphanConfidences::rawValue(group->confidence);
    evidenceSummary = group->evidenceSummary;
    itemCount = int(group->items.size());
    size = group->totalSize();
    formattedSize = group->formattedTotalSize();
}

ScanResultValue::ScanResultValue(const std::optional<ScanResult> &result)
{
    if (!result)
        return;
    valid = true;
    itemCount = int(result->items.size());
    size = result->totalSize();
    formattedSize = result->formattedTotalSize();
}

DeletionReportValue::DeletionReportValue(const std::optional<DeletionReport> &report)
{
    if (!report)
        return;
    valid = true;
    deletedCount = int(report->deleted.size());
    failedCount = int(report->failed.size());
    for (const auto &[item, message] : report->failed) {
        failures.append(QVariantMap{{QStringLiteral("path"), item.path()},
                                    {QStringLiteral("name"), item.name()},
                                    {QStringLiteral("message"), message},
                                    // GIO's messages already name the path; a line names it once.
                                    {QStringLiteral("line"), message.contains(item.path()) ? message
                                                                 : item.path() + QStringLiteral(": ") + message},
                                    {QStringLiteral("requiresAdmin"), item.requiresAdmin()}});
    }
}

UpdateValue::UpdateValue(const std::optional<AppUpdateInfo> &update)
{
    if (!update)
        return;
    valid = true;
    version = update->version;
    title = QStringLiteral("Update available: v%1").arg(update->version);
    downloadURL = update->downloadURL;
    releaseNotes = update->releaseNotes.value_or(QString());
    hasReleaseNotes = update->releaseNotes.has_value();
}
