// SPDX-License-Identifier: MIT
#include "QuickHarness.h"

#include "Futures.h"
#include "TestSupport.h"
#include "state/AppViewModel.h"

#include <QImage>
#include <QMimeData>
#include <QFileInfo>
#include <QQuickItem>
#include <QQuickWindow>

#include <sys/stat.h>
#include <QQmlEngine>
#include <QTemporaryDir>
#include <cstdio>

namespace {

QPointF centreInWindow(const QQuickItem *item) { return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)); }

} // namespace

QuickHarness::QuickHarness(QObject *parent) : QObject(parent), m_folder(std::make_unique<QTemporaryDir>())
{
    // The sample holds read-only files; the sweep at exit removes them, QTemporaryDir cannot.
    m_folder->setAutoRemove(false);
    QString log;
    if (!TestSupport::generateSampleMac(m_folder->path(), 1, QStringLiteral("small"), &log))
        std::fprintf(stderr, "sample Mac not written: %s\n", qPrintable(log));
    TestSupport::useLayout(m_folder->path(), TestSupport::sampleHome(m_folder->path()));
}

QuickHarness::~QuickHarness() = default;

QObject *QuickHarness::newViewModel(const QVariantMap &options)
{
    AppViewModelServices services;
    services.moveToTrash = [this](const QList<LeftoverItem> &items) {
        DeletionReport report;
        for (const LeftoverItem &item : items) {
            if (m_trashMoves) {
                report.deleted.append(item);
                report.trashedPaths.append(QStringLiteral("/Trash/files/") + item.name());
            } else {
                report.failed.append({item, QStringLiteral("Operation not permitted")});
            }
        }
        return finished(report);
    };
    services.putBack = [](const QList<TrashedItem> &items) {
        RestoreReport report;
        for (const TrashedItem &entry : items)
            report.restored.append(entry.item);
        return finished(report);
    };
    services.playDeletionComplete = [] {};
    services.checkForUpdate = [version = options.value(QStringLiteral("offeredVersion")).toString()] {
        std::optional<AppUpdateInfo> offer;
        if (!version.isEmpty())
            offer = AppUpdateInfo{version, QUrl(QStringLiteral("https://example.com/kestrune.dmg")), std::nullopt};
        return finished(offer);
    };
    services.currentVersion = [] { return QStringLiteral("1.0.0"); };
    services.openUrl = [this](const QUrl &url) {
        m_lastOpenedUrl = url;
        Q_EMIT changed();
    };
    if (const int count = options.value(QStringLiteral("syntheticApps")).toInt(); count > 0) {
        QList<InstalledApp> apps;
        for (int i = 0; i < count; ++i) {
            const QString path = QStringLiteral("/Applications/Made Up %1.app").arg(i, 5, 10, QLatin1Char('0'));
            apps.append(InstalledApp{path, QStringLiteral("Made Up %1").arg(i, 5, 10, QLatin1Char('0')),
                                     QUrl::fromLocalFile(path), std::nullopt, 1000 + i});
        }
        services.discoverInstalledApps = [apps] { return finished(apps); };
    }
    if (options.contains(QStringLiteral("syntheticItems"))) {
        services.scanApp = [count = options.value(QStringLiteral("syntheticItems")).toInt()](const InstalledApp &app) {
            ScanResult result;
            for (int i = 0; i < count; ++i) {
                const auto category = LeftoverCategories::allCases[i % LeftoverCategories::allCases.size()];
                result.items.append(LeftoverItem::at(QStringLiteral("%1/item %2").arg(app.id).arg(i), category, i));
            }
            return finished(result);
        };
    }
    auto *model = new AppViewModel(std::move(services));
    QQmlEngine::setObjectOwnership(model, QQmlEngine::JavaScriptOwnership);
    return model;
}

QVariant QuickHarness::update(const QString &version, const QVariant &notes) const
{
    std::optional<QString> releaseNotes;
    if (notes.isValid() && !notes.isNull())
        releaseNotes = notes.toString();
    return QVariant::fromValue(UpdateValue(AppUpdateInfo{version, QUrl(QStringLiteral("https://example.com/k.dmg")), releaseNotes}));
}

QString QuickHarness::applicationPath(const QString &bundleName) const
{
    return m_folder->path() + QStringLiteral("/Applications/") + bundleName;
}

bool QuickHarness::dragOver(QQuickItem *item, const QVariantMap &data)
{
    m_dragData = std::make_unique<QMimeData>();
    if (data.contains(QStringLiteral("urls"))) {
        QList<QUrl> urls;
        for (const QVariant &url : data.value(QStringLiteral("urls")).toList())
            urls.append(url.toUrl());
        m_dragData->setUrls(urls);
    }
    if (data.contains(QStringLiteral("text")))
        m_dragData->setText(data.value(QStringLiteral("text")).toString());
    if (data.value(QStringLiteral("image")).toBool()) {
        QImage image(8, 8, QImage::Format_ARGB32);
        image.fill(Qt::red);
        m_dragData->setImageData(image);
    }
    const QPoint where = centreInWindow(item).toPoint();
    const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    QDragEnterEvent enter(where, actions, m_dragData.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(item->window(), &enter);
    QDragMoveEvent move(where + QPoint(1, 1), actions, m_dragData.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(item->window(), &move);
    return enter.isAccepted() && move.isAccepted();
}

bool QuickHarness::dropOn(QQuickItem *item)
{
    QDropEvent drop(centreInWindow(item), Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, m_dragData.get(),
                    Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(item->window(), &drop);
    return drop.isAccepted();
}

void QuickHarness::dragAway(QQuickItem *item)
{
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(item->window(), &leave);
}

QString QuickHarness::bundleWithPipedIcon() const
{
    const QString bundle = m_folder->path() + QStringLiteral("/Elsewhere/Piped.app");
    TestSupport::writeFile(bundle + QStringLiteral("/Contents/Info.plist"), TestSupport::infoPlist({{"CFBundleIconFile", "Piped"}}));
    const QString icon = bundle + QStringLiteral("/Contents/Resources/Piped.icns");
    TestSupport::makeFolder(bundle + QStringLiteral("/Contents/Resources"));
    if (!QFileInfo::exists(icon))
        ::mkfifo(QFile::encodeName(icon).constData(), 0600);
    return bundle;
}
