// SPDX-License-Identifier: MIT
#pragma once

#include "models/AppUpdateInfo.h"
#include "models/DeletionReport.h"
#include "models/ScanResult.h"

#include <QObject>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <optional>

// Read-only views of the optional records, for QML: `valid` is false where the field holds none.

class ScanResultValue {
    Q_GADGET
    QML_VALUE_TYPE(scanResultValue)
    Q_PROPERTY(bool valid MEMBER valid CONSTANT)
    Q_PROPERTY(int itemCount MEMBER itemCount CONSTANT)
    Q_PROPERTY(qint64 size MEMBER size CONSTANT)
    Q_PROPERTY(QString formattedSize MEMBER formattedSize CONSTANT)
public:
    ScanResultValue() = default;
    explicit ScanResultValue(const std::optional<ScanResult> &result);

    bool valid = false;
    int itemCount = 0;
    qint64 size = 0;
    QString formattedSize;
};

class DeletionReportValue {
    Q_GADGET
    QML_VALUE_TYPE(deletionReportValue)
    Q_PROPERTY(bool valid MEMBER valid CONSTANT)
    Q_PROPERTY(int deletedCount MEMBER deletedCount CONSTANT)
    Q_PROPERTY(int failedCount MEMBER failedCount CONSTANT)
    // Each entry: {path, name, message, line (the path and message for one line), requiresAdmin}.
    Q_PROPERTY(QVariantList failures MEMBER failures CONSTANT)
public:
    DeletionReportValue() = default;
    explicit DeletionReportValue(const std::optional<DeletionReport> &report);

    bool valid = false;
    int deletedCount = 0;
    int failedCount = 0;
    QVariantList failures;
};

class UpdateValue {
    Q_GADGET
    QML_VALUE_TYPE(updateValue)
    Q_PROPERTY(bool valid MEMBER valid CONSTANT)
    Q_PROPERTY(QString version MEMBER version CONSTANT)
    // "Update available: v2.0.1".
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QUrl downloadURL MEMBER downloadURL CONSTANT)
    Q_PROPERTY(QString releaseNotes MEMBER releaseNotes CONSTANT)
    // Empty notes still take the banner's notes line; only absent ones fall back to the fixed sentence.
    Q_PROPERTY(bool hasReleaseNotes MEMBER hasReleaseNotes CONSTANT)
public:
    UpdateValue() = default;
    explicit UpdateValue(const std::optional<AppUpdateInfo> &update);

    bool valid = false;
    QString version;
    QString title;
    QUrl downloadURL;
    QString releaseNotes;
    bool hasReleaseNotes = false;
};
