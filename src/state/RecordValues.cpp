// SPDX-License-Identifier: MIT
#include "state/RecordValues.h"

#include "platform/ByteCountFormatter.h"

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
