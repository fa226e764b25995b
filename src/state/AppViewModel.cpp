// SPDX-License-Identifier: MIT
#include "state/AppViewModel.h"

#include "models/RecordFields.h"
#include "platform/ByteCountFormatter.h"
#include "platform/FileSystem.h"
#include "platform/MacPlatform.h"
#include "platform/UrlOpener.h"
#include "services/AppDiscoveryService.h"
#include "services/BundleRemovability.h"
#include "services/DeletionService.h"
#include "services/LeftoverScannerService.h"
#include "services/LibraryAccess.h"
#include "services/OrphanedLeftoverScannerService.h"
#include "services/SoundService.h"
#include "services/UpdateCheckService.h"

#include <QCoreApplication>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

#include <memory>

namespace {

// A bundle is read only when it is a folder that can be listed: a plain file or an unreadable folder
// named "X.app" would otherwise pass as an app with no information at all.
std::optional<InstalledApp> readBundle(const QString &path)
{
    bool isDirectory = false;
    if (!FileSystem::exists(path, &isDirectory) || !isDirectory)
        return std::nullopt;
    if (!FileSystem::contentsOfDirectory(path, false))
        return std::nullopt;
    return InstalledApp::from(path);
}

QString pluralSuffix(qsizetype count)
{
    return count == 1 ? QString() : QStringLiteral("es");
}

template<typename T>
QSet<QString> idsOf(const QList<T> &records)
{
    QSet<QString> ids;
    ids.reserve(records.size());
    for (const T &record : records)
        ids.insert(record.id);
    return ids;
}

// What a finished scan ticks: everything but what another app or macOS owns.
QSet<QString> defaultSelection(const QList<LeftoverItem> &items)
{
    QSet<QString> ids;
    for (const LeftoverItem &item : items) {
        if (item.isSelectedByDefault())
            ids.insert(item.id);
    }
    return ids;
}

bool nameOrIdentifierContains(const QString &name, const std::optional<QString> &identifier, const QString &text)
{
    if (name.contains(text, Qt::CaseInsensitive))
        return true;
    return identifier && identifier->contains(text, Qt::CaseInsensitive);
}

} // namespace

AppViewModelServices AppViewModelServices::real()
{
    AppViewModelServices services;
    services.discoverInstalledApps = [] { return QtConcurrent::run(&AppDiscoveryService::discoverInstalledApps); };
    services.scanApp = [](const InstalledApp &app) { return LeftoverScannerService::scan(app); };
    services.scanRemovedApps = [] { return OrphanedLeftoverScannerService::scan(); };
    services.moveToTrash = [](const QList<LeftoverItem> &items) {
        return QtConcurrent::run([items] { return DeletionService::moveToTrash(items); });
    };
    services.putBack = [](const QList<TrashedItem> &items) {
        return QtConcurrent::run([items] { return DeletionService::putBack(items); });
    };
    services.playDeletionComplete = [] { SoundService::playDeletionComplete(); };
    services.checkForUpdate = [] { return UpdateCheckService::checkForUpdate(); };
    services.currentVersion = [] { return UpdateCheckService::currentVersion(); };
    services.readDroppedApp = [](const QString &path) { return QtConcurrent::run(&readBundle, path); };
    services.openUrl = [](const QUrl &url) { UrlOpener::open(url); };
    services.checkBundleRemovable = [](const InstalledApp &app) { return QtConcurrent::run(&BundleRemovability::check, app); };
    services.isLibraryAccessRefused = [] { return QtConcurrent::run(&LibraryAccess::isRefused); };
    services.canOpenFullDiskAccessSettings = [] { return MacPlatform::canOpenFullDiskAccessSettings(); };
    services.openFullDiskAccessSettings = [] { MacPlatform::openFullDiskAccessSettings(); };
    return services;
}

AppViewModel::AppViewModel(QObject *parent) : AppViewModel(AppViewModelServices::real(), parent) {}

AppViewModel::AppViewModel(AppViewModelServices services, QObject *parent)
    : QObject(parent), m_services(std::move(services))
{
    const AppViewModelServices real = AppViewModelServices::real();
    auto fill = [](auto &function, const auto &fallback) {
        if (!function)
            function = fallback;
    };
    fill(m_services.discoverInstalledApps, real.discoverInstalledApps);
    fill(m_services.scanApp, real.scanApp);
    fill(m_services.scanRemovedApps, real.scanRemovedApps);
    fill(m_services.moveToTrash, real.moveToTrash);
    fill(m_services.putBack, real.putBack);
    fill(m_services.playDeletionComplete, real.playDeletionComplete);
    fill(m_services.checkForUpdate, real.checkForUpdate);
    fill(m_services.currentVersion, real.currentVersion);
    fill(m_services.readDroppedApp, real.readDroppedApp);
    fill(m_services.openUrl, real.openUrl);
    fill(m_services.checkBundleRemovable, real.checkBundleRemovable);
    fill(m_services.isLibraryAccessRefused, real.isLibraryAccessRefused);
    fill(m_services.canOpenFullDiskAccessSettings, real.canOpenFullDiskAccessSettings);
    fill(m_services.openFullDiskAccessSettings, real.openFullDiskAccessSettings);
}

template<typename T, typename Apply>
void AppViewModel::whenDone(QFuture<T> future, Apply apply)
{
    // A task that finished before the continuation was attached has it run inside this call, which
    // would skip the "under way" state the caller has just shown; such a result waits for the next
    // event instead. Only the main thread touches the flag.
    auto attaching = std::make_shared<bool>(true);
    // A task can outlive this object (the window closes mid-scan), and Qt asserts that a continuation's
    // context is still alive when its task ends. So each task gets a context of its own on this thread,
    // dropped once the task has delivered, and a result that arrives after this object is gone is dropped.
    auto *context = new QObject;
    const QPointer<AppViewModel> self(this);
    const auto deliver = [self, context, apply, attaching](T value) {
        // At exit Qt destroys the results still queued while it holds the queue's lock, which cancels
        // them into this call (qfuture_impl.h: ~QPromise runs the continuation): posting anything now
        // would wait on that lock for ever. The context goes with the process.
        if (QCoreApplication::closingDown())
            return;
        context->deleteLater();
        if (!self)
            return;
        if (*attaching)
            QMetaObject::invokeMethod(self, [apply, value = std::move(value)] { apply(value); }, Qt::QueuedConnection);
        else
            apply(value);
    };
    // Taking the future itself lets a failed task reach the continuation; a cancelled one skips it
    // and lands in onCanceled instead.
    future
        .then(context,
              [deliver](QFuture<T> finished) {
                  T value{};
                  try {
                      if (!finished.isCanceled() && finished.resultCount() > 0)
                          value = finished.result();
                  } catch (...) {
                  }
                  deliver(std::move(value));
              })
        .onCanceled(context, [deliver] { deliver(T{}); });
    *attaching = false;
}

// ---- Field assignments ----

void AppViewModel::setSidebarMode(SidebarMode mode)
{
    m_sidebarMode = mode;
    Q_EMIT sidebarModeChanged();
}

void AppViewModel::setApps(const QList<InstalledApp> &apps)
{
    m_apps = apps;
    m_appsModel.setRecords(m_apps);
    Q_EMIT appsChanged();
}

void AppViewModel::setSelectedApp(const std::optional<InstalledApp> &app)
{
    m_selectedApp = app;
    Q_EMIT selectedAppChanged();
}

void AppViewModel::setOrphanedGroups(const QList<OrphanedAppGroup> &groups)
{
    m_orphanedGroups = groups;
    m_orphanedGroupsModel.setRecords(m_orphanedGroups);
    Q_EMIT orphanedGroupsChanged();
}

void AppViewModel::setSelectedOrphan(const std::optional<OrphanedAppGroup> &group)
{
    m_selectedOrphan = group;
    Q_EMIT selectedOrphanChanged();
}

void AppViewModel::setSearchText(const QString &text)
{
    m_searchText = text;
    Q_EMIT searchTextChanged();
    refreshDerived();
}

void AppViewModel::setScanResult(const std::optional<ScanResult> &result)
{
    m_scanResult = result;
    Q_EMIT scanResultChanged();
}

void AppViewModel::setSelectedItemIDs(const QSet<QString> &ids)
{
    m_selectedItemIDs = ids;
    Q_EMIT selectedItemIDsChanged();
}

void AppViewModel::setIsLoadingApps(bool value)
{
    m_isLoadingApps = value;
    Q_EMIT isLoadingAppsChanged();
}

void AppViewModel::setIsScanning(bool value)
{
    m_isScanning = value;
    Q_EMIT isScanningChanged();
}

void AppViewModel::setIsScanningOrphans(bool value)
{
    m_isScanningOrphans = value;
    Q_EMIT isScanningOrphansChanged();
}

void AppViewModel::setIsDeleting(bool value)
{
    m_isDeleting = value;
    Q_EMIT isDeletingChanged();
}

void AppViewModel::setStatusMessage(const std::optional<QString> &message)
{
    m_statusMessage = message;
    m_offersFullDiskAccess = false;
    Q_EMIT statusMessageChanged();
}

void AppViewModel::setShowDeleteConfirmation(bool show)
{
    m_showDeleteConfirmation = show;
    Q_EMIT showDeleteConfirmationChanged();
}

void AppViewModel::setShowUncertainMatches(bool show)
{
    m_showUncertainMatches = show;
    Q_EMIT showUncertainMatchesChanged();
    if (m_sidebarMode == SidebarMode::Removed)
        applyOrphanSelection(visibleOrphans());
    refreshDerived();
}

void AppViewModel::setIsDropProcessing(bool value)
{
    m_isDropProcessing = value;
    Q_EMIT isDropProcessingChanged();
}

void AppViewModel::setLastDeletionReport(const std::optional<DeletionReport> &report)
{
    m_lastDeletionReport = report;
    Q_EMIT lastDeletionReportChanged();
}

void AppViewModel::setAvailableUpdate(const std::optional<AppUpdateInfo> &update)
{
    m_availableUpdate = update;
    Q_EMIT availableUpdateChanged();
}

void AppViewModel::setIsCheckingForUpdate(bool value)
{
    m_isCheckingForUpdate = value;
    Q_EMIT isCheckingForUpdateChanged();
}

// ---- Derived members ----

QList<OrphanedAppGroup> AppViewModel::visibleOrphans() const
{
    if (m_showUncertainMatches)
        return m_orphanedGroups;
    QList<OrphanedAppGroup> visible;
    for (const OrphanedAppGroup &group : m_orphanedGroups) {
        if (group.confidence != OrphanConfidence::uncertain)
            visible.append(group);
    }
    return visible;
}

QList<InstalledApp> AppViewModel::filteredApps() const
{
    if (m_searchText.isEmpty())
        return m_apps;
    QList<InstalledApp> found;
    for (const InstalledApp &app : m_apps) {
        if (nameOrIdentifierContains(app.name, app.bundleIdentifier, m_searchText))
            found.append(app);
    }
    return found;
}

QList<OrphanedAppGroup> AppViewModel::filteredOrphans() const
{
    const QList<OrphanedAppGroup> visible = visibleOrphans();
    if (m_searchText.isEmpty())
        return visible;
    QList<OrphanedAppGroup> found;
    for (const OrphanedAppGroup &group : visible) {
        if (nameOrIdentifierContains(group.displayName, group.bundleIdentifier, m_searchText))
            found.append(group);
    }
    return found;
}

std::optional<ScanResult> AppViewModel::activeScanResult() const
{
    if (m_sidebarMode == SidebarMode::Installed)
        return m_scanResult;
    if (m_selectedOrphan)
        return m_selectedOrphan->scanResult();
    return std::nullopt;
}

QList<LeftoverItem> AppViewModel::selectedItems() const
{
    const std::optional<ScanResult> active = activeScanResult();
    if (!active)
        return {};
    QList<LeftoverItem> items;
    for (const LeftoverItem &item : active->items) {
        if (m_selectedItemIDs.contains(item.id))
            items.append(item);
    }
    return items;
}

qint64 AppViewModel::selectedTotalSize() const
{
    return LeftoverItems::totalSize(selectedItems());
}

QString AppViewModel::formattedSelectedTotalSize() const
{
    return ByteCountFormatter::string(selectedTotalSize());
}

QString AppViewModel::moveToTrashText() const
{
    return QStringLiteral("Move %1 Items to Trash").arg(QString::number(selectedItems().size()));
}

QString AppViewModel::trashConfirmationText() const
{
    const QList<LeftoverItem> items = selectedItems();
    if (items.isEmpty())
        return QStringLiteral("Review the scan results before moving items to the Trash.");
    return QStringLiteral("This will move %1 items (%2) to the Trash. You'll hear a sound when cleanup finishes.")
        .arg(QString::number(items.size()), ByteCountFormatter::string(LeftoverItems::totalSize(items)));
}

QString AppViewModel::shownAppsText() const
{
    return QStringLiteral("%1 shown").arg(m_filteredAppsModel.rowCount());
}

QString AppViewModel::shownOrphansText() const
{
    return QStringLiteral("%1 shown").arg(m_filteredOrphansModel.rowCount());
}

QVariantMap AppViewModel::selectedAppValue() const
{
    return RecordFields::windowMap(m_selectedApp);
}

QVariantMap AppViewModel::selectedOrphanValue() const
{
    return RecordFields::windowMap(m_selectedOrphan);
}

QStringList AppViewModel::selectedItemIDList() const
{
    QStringList ids(m_selectedItemIDs.cbegin(), m_selectedItemIDs.cend());
    ids.sort();
    return ids;
}

void AppViewModel::refreshDerived()
{
    // Lists are replaced whole, never edited in place, so sharing the same data means unchanged.
    const bool sidebarUnchanged = m_sidebarInputs.built && m_sidebarInputs.apps.isSharedWith(m_apps)
        && m_sidebarInputs.groups.isSharedWith(m_orphanedGroups)
        && m_sidebarInputs.showUncertainMatches == m_showUncertainMatches && m_sidebarInputs.searchText == m_searchText;
    if (!sidebarUnchanged) {
        m_visibleOrphansModel.setRecords(visibleOrphans());
        m_filteredAppsModel.setRecords(filteredApps());
        m_filteredOrphansModel.setRecords(filteredOrphans());
        m_sidebarInputs = {m_apps, m_orphanedGroups, m_showUncertainMatches, m_searchText, true};
        Q_EMIT sidebarListsChanged();
    }

    const std::optional<ScanResult> active = activeScanResult();
    m_activeItemsModel.setRecords(active ? active->items : QList<LeftoverItem>(), m_selectedItemIDs);
    if (active != m_lastActiveScanResult) {
        m_lastActiveScanResult = active;
        Q_EMIT activeScanResultChanged();
    }
    const QList<LeftoverItem> selected = selectedItems();
    m_selectedItemsModel.setRecords(selected, m_selectedItemIDs);
    if (selected != m_lastSelectedItems) {
        m_lastSelectedItems = selected;
        Q_EMIT selectedItemsChanged();
    }
}

// ---- Loading, selection and scans ----

void AppViewModel::loadApps()
{
    setIsLoadingApps(true);
    setStatusMessage(std::nullopt);
    whenDone(m_services.discoverInstalledApps(), [this](const QList<InstalledApp> &apps) { applyLoadedApps(apps); });
}

void AppViewModel::applyLoadedApps(const QList<InstalledApp> &apps)
{
    setApps(apps);
    const bool stillListed = m_selectedApp
        && std::any_of(m_apps.cbegin(), m_apps.cend(), [this](const InstalledApp &app) { return app.id == m_selectedApp->id; });
    if (!stillListed)
        setSelectedApp(m_apps.isEmpty() ? std::nullopt : std::optional<InstalledApp>(m_apps.first()));
    setIsLoadingApps(false);
    refreshDerived();
}

void AppViewModel::selectApp(const InstalledApp &app)
{
    setSelectedApp(app);
    setScanResult(std::nullopt);
    setSelectedItemIDs({});
    setStatusMessage(std::nullopt);
    setLastDeletionReport(std::nullopt);
    refreshDerived();
}

void AppViewModel::scanSelectedApp()
{
    if (!m_selectedApp)
        return;
    setIsScanning(true);
    setStatusMessage(QStringLiteral("Scanning for leftover files…"));
    setScanResult(std::nullopt);
    setSelectedItemIDs({});
    setLastDeletionReport(std::nullopt);
    refreshDerived();
    whenDone(m_services.scanApp(*m_selectedApp), [this](const ScanResult &result) { applyScan(result); });
}

void AppViewModel::applyScan(const ScanResult &result)
{
    setScanResult(result);
    setSelectedItemIDs(defaultSelection(result.items));
    setIsScanning(false);
    setStatusMessage(QStringLiteral("Found %1 related items (%2).")
                         .arg(QString::number(result.items.size()), result.formattedTotalSize()));
    refreshDerived();
    checkLibraryAccessOnce();
}

void AppViewModel::switchSidebarMode(SidebarModes::Mode mode)
{
    setSidebarMode(mode);
    setSearchText(QString());
    setSelectedItemIDs({});
    setLastDeletionReport(std::nullopt);
    setStatusMessage(std::nullopt);
    setScanResult(std::nullopt);
    if (mode == SidebarMode::Installed) {
        setSelectedOrphan(std::nullopt);
    } else {
        setSelectedApp(std::nullopt);
        if (!m_orphanedGroups.isEmpty())
            applyOrphanSelection(visibleOrphans());
        else
            scanForRemovedApps();
    }
    refreshDerived();
}

void AppViewModel::scanForRemovedApps()
{
    setIsScanningOrphans(true);
    setStatusMessage(QStringLiteral("Scanning Library for leftovers from removed apps…"));
    setOrphanedGroups({});
    setSelectedOrphan(std::nullopt);
    setSelectedItemIDs({});
    setLastDeletionReport(std::nullopt);
    refreshDerived();
    whenDone(m_services.scanRemovedApps(), [this](const QList<OrphanedAppGroup> &groups) { applyRemovedAppScan(groups); });
}

void AppViewModel::applyRemovedAppScan(const QList<OrphanedAppGroup> &groups)
{
    setOrphanedGroups(groups);
    applyOrphanSelection(visibleOrphans());
    setIsScanningOrphans(false);
    if (groups.isEmpty()) {
        setStatusMessage(QStringLiteral("No confident leftovers from removed apps were found."));
    } else {
        const qsizetype hidden = std::count_if(groups.cbegin(), groups.cend(), [](const OrphanedAppGroup &group) {
            return group.confidence == OrphanConfidence::uncertain;
        });
        const qsizetype shown = m_showUncertainMatches ? groups.size() : groups.size() - hidden;
        QString message = QStringLiteral("Showing %1 removed app match%2.").arg(QString::number(shown), pluralSuffix(shown));
        if (hidden > 0 && !m_showUncertainMatches)
            message += QStringLiteral(" %1 uncertain match%2 hidden.").arg(QString::number(hidden), pluralSuffix(hidden));
        setStatusMessage(message);
    }
    refreshDerived();
    checkLibraryAccessOnce();
}

void AppViewModel::checkLibraryAccessOnce()
{
    // Granting Full Disk Access takes a restart of the program, so one mention per launch is enough.
    if (m_libraryAccessChecked)
        return;
    m_libraryAccessChecked = true;
    whenDone(m_services.isLibraryAccessRefused(), [this](bool refused) {
        if (!refused)
            return;
        const QString hint = QStringLiteral("Some Library folders were not readable: Full Disk Access for Kestrune lets it see everything.");
        // One notification for the line and its button.
        m_statusMessage = m_statusMessage && !m_statusMessage->isEmpty() ? *m_statusMessage + QLatin1Char(' ') + hint : hint;
        m_offersFullDiskAccess = m_services.canOpenFullDiskAccessSettings();
        Q_EMIT statusMessageChanged();
    });
}

void AppViewModel::openFullDiskAccessSettings()
{
    m_services.openFullDiskAccessSettings();
}

void AppViewModel::applyOrphanSelection(const QList<OrphanedAppGroup> &groups)
{
    if (m_selectedOrphan) {
        const auto kept = std::find_if(groups.cbegin(), groups.cend(),
                                       [this](const OrphanedAppGroup &group) { return group.id == m_selectedOrphan->id; });
        if (kept != groups.cend()) {
            setSelectedOrphan(*kept);
            setSelectedItemIDs(idsOf(kept->items));
            return;
        }
    }
    setSelectedOrphan(groups.isEmpty() ? std::nullopt : std::optional<OrphanedAppGroup>(groups.first()));
    setSelectedItemIDs(groups.isEmpty() ? QSet<QString>() : idsOf(groups.first().items));
}

void AppViewModel::selectOrphan(const OrphanedAppGroup &group)
{
    setSelectedOrphan(group);
    setSelectedItemIDs(idsOf(group.items));
    setStatusMessage(QStringLiteral("Found %1 leftover items (%2).")
                         .arg(QString::number(group.items.size()), group.formattedTotalSize()));
    setLastDeletionReport(std::nullopt);
    refreshDerived();
}

void AppViewModel::selectAppById(const QString &id)
{
    for (const InstalledApp &app : std::as_const(m_apps)) {
        if (app.id == id)
            return selectApp(app);
    }
}

void AppViewModel::selectOrphanById(const QString &id)
{
    for (const OrphanedAppGroup &group : std::as_const(m_orphanedGroups)) {
        if (group.id == id)
            return selectOrphan(group);
    }
}

// ---- Item selection and deletion ----

void AppViewModel::toggleItemSelection(const QString &itemID)
{
    QSet<QString> ids = m_selectedItemIDs;
    if (!ids.remove(itemID))
        ids.insert(itemID);
    setSelectedItemIDs(ids);
    refreshDerived();
}

void AppViewModel::setSelection(LeftoverCategory category, bool isSelected)
{
    const std::optional<ScanResult> active = activeScanResult();
    if (!active)
        return;
    QSet<QString> ids = m_selectedItemIDs;
    for (const LeftoverItem &item : active->itemsFor(category)) {
        if (isSelected)
            ids.insert(item.id);
        else
            ids.remove(item.id);
    }
    setSelectedItemIDs(ids);
    refreshDerived();
}

void AppViewModel::setCategorySelection(const QString &categoryRawValue, bool isSelected)
{
    if (const std::optional<LeftoverCategory> category = LeftoverCategories::fromRawValue(categoryRawValue))
        setSelection(*category, isSelected);
}

void AppViewModel::selectAll()
{
    const std::optional<ScanResult> active = activeScanResult();
    if (!active)
        return;
    setSelectedItemIDs(idsOf(active->items));
    refreshDerived();
}

void AppViewModel::deselectAll()
{
    setSelectedItemIDs({});
    refreshDerived();
}

void AppViewModel::confirmDelete()
{
    setShowDeleteConfirmation(true);
}

void AppViewModel::deleteSelectedItems()
{
    const QList<LeftoverItem> items = selectedItems();
    if (items.isEmpty())
        return;
    DeletionContext context{m_selectedApp, m_sidebarMode, false};
    if (context.app) {
        // Ids are the exact path strings; URLs would lose names that are not UTF-8.
        const QString &bundlePath = context.app->bundlePath();
        context.bundleAmongItems = std::any_of(items.cbegin(), items.cend(),
                                               [&bundlePath](const LeftoverItem &item) { return item.path() == bundlePath; });
    }
    setIsDeleting(true);
    setStatusMessage(QStringLiteral("Moving selected items to Trash…"));
    if (!context.bundleAmongItems) {
        startDeletion(items, context);
        return;
    }
    // The Library items go first; a bundle that then refused to move would leave the app without its data.
    whenDone(m_services.checkBundleRemovable(*context.app),
             [this, items, context](const std::optional<QString> &obstacle) {
                 if (!obstacle) {
                     startDeletion(items, context);
                     return;
                 }
                 setIsDeleting(false);
                 setStatusMessage(*obstacle);
             });
}

void AppViewModel::startDeletion(const QList<LeftoverItem> &items, const DeletionContext &context)
{
    whenDone(m_services.moveToTrash(items), [this, context](const DeletionReport &report) { applyDeletion(report, context); });
}

void AppViewModel::applyDeletion(const DeletionReport &report, const DeletionContext &context)
{
    setLastDeletionReport(report);
    m_lastRemoval = DeletionService::trashedItems(report);
    Q_EMIT canPutBackChanged();
    m_lastPutBackReport.reset();
    Q_EMIT lastPutBackReportChanged();
    setIsDeleting(false);
    const QString moved = QStringLiteral("Moved %1 items to Trash.").arg(QString::number(report.deleted.size()));
    if (!report.failed.isEmpty()) {
        setStatusMessage(moved + QStringLiteral(" %1 could not be removed.").arg(QString::number(report.failed.size())));
        if (!report.deleted.isEmpty())
            m_services.playDeletionComplete();
    } else {
        setStatusMessage(moved);
        m_services.playDeletionComplete();
    }
    refreshDerived();

    if (context.mode == SidebarMode::Installed) {
        whenDone(m_services.discoverInstalledApps(),
                 [this, context](const QList<InstalledApp> &apps) { applyReloadAfterDeletion(apps, context); });
    } else {
        whenDone(m_services.scanRemovedApps(),
                 [this](const QList<OrphanedAppGroup> &groups) { applyRescanAfterDeletion(groups); });
    }
}

void AppViewModel::applyReloadAfterDeletion(const QList<InstalledApp> &apps, const DeletionContext &context)
{
    setApps(apps);
    const bool stillListed = context.app
        && std::any_of(m_apps.cbegin(), m_apps.cend(), [&context](const InstalledApp &app) { return app.id == context.app->id; });
    if (!context.bundleAmongItems && stillListed) {
        setSelectedApp(context.app);
        refreshDerived();
        scanSelectedApp();
        return;
    }
    setScanResult(std::nullopt);
    setSelectedItemIDs({});
    setSelectedApp(m_apps.isEmpty() ? std::nullopt : std::optional<InstalledApp>(m_apps.first()));
    refreshDerived();
}

void AppViewModel::applyRescanAfterDeletion(const QList<OrphanedAppGroup> &groups)
{
    setOrphanedGroups(groups);
    applyOrphanSelection(visibleOrphans());
    if (groups.isEmpty()) {
        setStatusMessage(QStringLiteral("All leftovers for that app were removed."));
    } else if (m_selectedOrphan) {
        setStatusMessage(QStringLiteral("Found %1 remaining items (%2).")
                             .arg(QString::number(m_selectedOrphan->items.size()), m_selectedOrphan->formattedTotalSize()));
    }
    refreshDerived();
}

void AppViewModel::putBackLastRemoval()
{
    if (m_lastRemoval.isEmpty() || m_isPuttingBack)
        return;
    m_isPuttingBack = true;
    Q_EMIT isPuttingBackChanged();
    setStatusMessage(QStringLiteral("Putting back %1 items…").arg(QString::number(m_lastRemoval.size())));
    const SidebarMode mode = m_sidebarMode;
    whenDone(m_services.putBack(m_lastRemoval), [this, mode](const RestoreReport &report) { applyPutBack(report, mode); });
}

void AppViewModel::applyPutBack(const RestoreReport &report, SidebarMode mode)
{
    // What stayed in the Trash can be tried again, once its place is free.
    QList<TrashedItem> left;
    for (const TrashedItem &entry : std::as_const(m_lastRemoval)) {
        if (std::any_of(report.failed.cbegin(), report.failed.cend(),
                        [&entry](const QPair<LeftoverItem, QString> &failure) { return failure.first.id == entry.item.id; }))
            left.append(entry);
    }
    m_lastRemoval = left;
    Q_EMIT canPutBackChanged();
    m_isPuttingBack = false;
    Q_EMIT isPuttingBackChanged();
    m_lastPutBackReport = report;
    Q_EMIT lastPutBackReportChanged();
    const QString restored = QStringLiteral("Put back %1 items.").arg(QString::number(report.restored.size()));
    setStatusMessage(report.failed.isEmpty()
                         ? restored
                         : restored + QStringLiteral(" %1 could not be put back.").arg(QString::number(report.failed.size())));

    // The lists catch up without a scan's own status line, so the outcome above stays readable.
    if (mode == SidebarMode::Installed) {
        whenDone(m_services.discoverInstalledApps(), [this](const QList<InstalledApp> &apps) {
            setApps(apps);
            refreshDerived();
            if (!m_selectedApp || m_sidebarMode != SidebarMode::Installed)
                return;
            const InstalledApp app = *m_selectedApp;
            whenDone(m_services.scanApp(app), [this, app](const ScanResult &result) {
                if (!m_selectedApp || m_selectedApp->id != app.id || m_sidebarMode != SidebarMode::Installed)
                    return;
                setScanResult(result);
                setSelectedItemIDs(idsOf(result.items));
                refreshDerived();
            });
        });
    } else {
        whenDone(m_services.scanRemovedApps(), [this](const QList<OrphanedAppGroup> &groups) {
            setOrphanedGroups(groups);
            if (m_sidebarMode == SidebarMode::Removed)
                applyOrphanSelection(visibleOrphans());
            refreshDerived();
        });
    }
}

DeletionReportValue AppViewModel::lastPutBackReportValue() const
{
    if (!m_lastPutBackReport)
        return DeletionReportValue();
    DeletionReport failures;
    failures.failed = m_lastPutBackReport->failed;
    return DeletionReportValue(failures);
}

// ---- Dropped apps and updates ----

void AppViewModel::handleDroppedApp(const QUrl &url)
{
    const QString path = url.isLocalFile() ? url.toLocalFile() : QString();
    if (FileSystem::pathExtension(path).toLower() != QLatin1String("app")) {
        setStatusMessage(QStringLiteral("Please drop a macOS app bundle (.app)."));
        return;
    }
    // Building the record sizes the bundle, so it happens off the main thread.
    whenDone(m_services.readDroppedApp(path), [this](const std::optional<InstalledApp> &app) { applyDroppedApp(app); });
}

void AppViewModel::applyDroppedApp(const std::optional<InstalledApp> &app)
{
    if (!app) {
        setStatusMessage(QStringLiteral("Could not read the dropped app."));
        return;
    }
    setSidebarMode(SidebarMode::Installed);
    setSelectedOrphan(std::nullopt);
    selectApp(*app);
    setIsDropProcessing(true);
    setStatusMessage(QStringLiteral("Scanning %1 for leftover files…").arg(app->name));
    refreshDerived();
    const InstalledApp copy = *app;
    whenDone(m_services.scanApp(copy), [this, copy](const ScanResult &result) { applyDroppedAppScan(result, copy); });
}

void AppViewModel::applyDroppedAppScan(const ScanResult &result, const InstalledApp &app)
{
    setScanResult(result);
    setSelectedItemIDs(defaultSelection(result.items));
    setIsDropProcessing(false);
    if (!result.items.isEmpty()) {
        setStatusMessage(QStringLiteral("Ready to remove %1 items (%2) for %3.")
                             .arg(QString::number(result.items.size()), result.formattedTotalSize(), app.name));
        setShowDeleteConfirmation(true);
    } else {
        setStatusMessage(QStringLiteral("No related files found for %1.").arg(app.name));
    }
    refreshDerived();
}

void AppViewModel::checkForUpdates(bool userInitiated)
{
    if (userInitiated)
        m_updateDismissedForSession = false;
    else if (m_updateDismissedForSession)
        return;
    if (m_isCheckingForUpdate)
        return;
    setIsCheckingForUpdate(true);
    whenDone(m_services.checkForUpdate(),
             [this, userInitiated](const std::optional<AppUpdateInfo> &update) { applyUpdateCheck(update, userInitiated); });
}

void AppViewModel::applyUpdateCheck(const std::optional<AppUpdateInfo> &update, bool userInitiated)
{
    setIsCheckingForUpdate(false);
    if (update) {
        setAvailableUpdate(update);
        if (userInitiated)
            setStatusMessage(QStringLiteral("Kestrune %1 is available to download.").arg(update->version));
    } else if (userInitiated) {
        setAvailableUpdate(std::nullopt);
        setStatusMessage(QStringLiteral("You're on the latest version (v%1).").arg(m_services.currentVersion()));
    }
}

void AppViewModel::dismissAvailableUpdate()
{
    m_updateDismissedForSession = true;
    setAvailableUpdate(std::nullopt);
}

void AppViewModel::openAvailableUpdateDownload()
{
    if (m_availableUpdate)
        m_services.openUrl(m_availableUpdate->downloadURL);
}
