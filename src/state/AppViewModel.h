// SPDX-License-Identifier: MIT
#pragma once

#include "models/AppUpdateInfo.h"
#include "models/DeletionReport.h"
#include "models/InstalledApp.h"
#include "models/LeftoverCategory.h"
#include "models/OrphanedAppGroup.h"
#include "models/ScanResult.h"
#include "models/SidebarMode.h"
#include "state/ListModels.h"
#include "state/RecordValues.h"

#include <QFuture>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <optional>

// Everything the view model asks of the outside world. Tests replace these to hold a task open and to
// finish tasks in any order; every function that does file or network work hands back a future.
struct AppViewModelServices {
    std::function<QFuture<QList<InstalledApp>>()> discoverInstalledApps;
    std::function<QFuture<ScanResult>(const InstalledApp &)> scanApp;
    std::function<QFuture<QList<OrphanedAppGroup>>()> scanRemovedApps;
    std::function<QFuture<DeletionReport>(const QList<LeftoverItem> &)> moveToTrash;
    std::function<QFuture<RestoreReport>(const QList<TrashedItem> &)> putBack;
    std::function<void()> playDeletionComplete;
    std::function<QFuture<std::optional<AppUpdateInfo>>()> checkForUpdate;
    std::function<QString()> currentVersion;
    // Builds the record of a dropped bundle; none when the bundle cannot be read.
    std::function<QFuture<std::optional<InstalledApp>>(const QString &)> readDroppedApp;
    std::function<void(const QUrl &)> openUrl;
    // Why the app's bundle cannot go to the Trash (checked before anything of it moves), else none.
    std::function<QFuture<std::optional<QString>>(const InstalledApp &)> checkBundleRemovable;
    // Whether privacy protection hides Library folders of other apps from the program.
    std::function<QFuture<bool>()> isLibraryAccessRefused;
    std::function<bool()> canOpenFullDiskAccessSettings;
    std::function<void()> openFullDiskAccessSettings;

    [[nodiscard]] static AppViewModelServices real();
};

// The one state object of the window. Lives on the main thread; background results come back through
// one apply function per action, in the order the tasks end.
class AppViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The window creates the one instance")

    Q_PROPERTY(SidebarModes::Mode sidebarMode READ sidebarMode NOTIFY sidebarModeChanged)
    Q_PROPERTY(InstalledAppListModel *apps READ appsModel NOTIFY appsChanged)
    // The selected record's fields as the lists show them, plus `valid`.
    Q_PROPERTY(QVariantMap selectedApp READ selectedAppValue NOTIFY selectedAppChanged)
    Q_PROPERTY(OrphanGroupListModel *orphanedGroups READ orphanedGroupsModel NOTIFY orphanedGroupsChanged)
    Q_PROPERTY(QVariantMap selectedOrphan READ selectedOrphanValue NOTIFY selectedOrphanChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(ScanResultValue scanResult READ scanResultValue NOTIFY scanResultChanged)
    Q_PROPERTY(QStringList selectedItemIDs READ selectedItemIDList NOTIFY selectedItemIDsChanged)
    Q_PROPERTY(bool isLoadingApps READ isLoadingApps NOTIFY isLoadingAppsChanged)
    Q_PROPERTY(bool isScanning READ isScanning NOTIFY isScanningChanged)
    Q_PROPERTY(bool isScanningOrphans READ isScanningOrphans NOTIFY isScanningOrphansChanged)
    Q_PROPERTY(bool isDeleting READ isDeleting NOTIFY isDeletingChanged)
    // Empty when no status line is shown.
    Q_PROPERTY(QString statusMessage READ statusText NOTIFY statusMessageChanged)
    // An empty message still shows the status banner; only an absent one hides it.
    Q_PROPERTY(bool hasStatusMessage READ hasStatusMessage NOTIFY statusMessageChanged)
    Q_PROPERTY(bool showDeleteConfirmation READ showDeleteConfirmation WRITE setShowDeleteConfirmation
                   NOTIFY showDeleteConfirmationChanged)
    // Writing it also moves the removed mode's selection off a group it hides.
    Q_PROPERTY(bool showUncertainMatches READ showUncertainMatches WRITE setShowUncertainMatches
                   NOTIFY showUncertainMatchesChanged)
    Q_PROPERTY(bool isDropProcessing READ isDropProcessing NOTIFY isDropProcessingChanged)
    Q_PROPERTY(DeletionReportValue lastDeletionReport READ lastDeletionReportValue NOTIFY lastDeletionReportChanged)
    Q_PROPERTY(UpdateValue availableUpdate READ availableUpdateValue NOTIFY availableUpdateChanged)
    Q_PROPERTY(bool isCheckingForUpdate READ isCheckingForUpdate NOTIFY isCheckingForUpdateChanged)
    // The last removal can be put back until the next one; nothing of it is stored on disk.
    Q_PROPERTY(bool canPutBack READ canPutBack NOTIFY canPutBackChanged)
    Q_PROPERTY(bool isPuttingBack READ isPuttingBack NOTIFY isPuttingBackChanged)
    // Only the failures count: {path, name, message, requiresAdmin} each.
    Q_PROPERTY(DeletionReportValue lastPutBackReport READ lastPutBackReportValue NOTIFY lastPutBackReportChanged)
    // The status line names Full Disk Access and the platform can open its settings pane.
    Q_PROPERTY(bool offersFullDiskAccess READ offersFullDiskAccess NOTIFY statusMessageChanged)

    // Derived lists: refilled whenever a field they depend on is assigned.
    Q_PROPERTY(OrphanGroupListModel *visibleOrphans READ visibleOrphansModel CONSTANT)
    Q_PROPERTY(InstalledAppListModel *filteredApps READ filteredAppsModel CONSTANT)
    Q_PROPERTY(OrphanGroupListModel *filteredOrphans READ filteredOrphansModel CONSTANT)
    Q_PROPERTY(ScanResultValue activeScanResult READ activeScanResultValue NOTIFY activeScanResultChanged)
    Q_PROPERTY(LeftoverItemListModel *activeItems READ activeItemsModel CONSTANT)
    Q_PROPERTY(LeftoverItemListModel *selectedItems READ selectedItemsModel CONSTANT)
    Q_PROPERTY(qint64 selectedTotalSize READ selectedTotalSize NOTIFY selectedItemsChanged)
    Q_PROPERTY(QString formattedSelectedTotalSize READ formattedSelectedTotalSize NOTIFY selectedItemsChanged)

    // The window's sentences about those lists.
    Q_PROPERTY(QString moveToTrashText READ moveToTrashText NOTIFY selectedItemsChanged)
    Q_PROPERTY(QString trashConfirmationText READ trashConfirmationText NOTIFY selectedItemsChanged)
    Q_PROPERTY(QString shownAppsText READ shownAppsText NOTIFY sidebarListsChanged)
    Q_PROPERTY(QString shownOrphansText READ shownOrphansText NOTIFY sidebarListsChanged)

public:
    explicit AppViewModel(QObject *parent = nullptr);
    // Functions left empty in services fall back to the real ones.
    explicit AppViewModel(AppViewModelServices services, QObject *parent = nullptr);

    [[nodiscard]] SidebarMode sidebarMode() const { return m_sidebarMode; }
    [[nodiscard]] const QList<InstalledApp> &apps() const { return m_apps; }
    [[nodiscard]] const std::optional<InstalledApp> &selectedApp() const { return m_selectedApp; }
    [[nodiscard]] const QList<OrphanedAppGroup> &orphanedGroups() const { return m_orphanedGroups; }
    [[nodiscard]] const std::optional<OrphanedAppGroup> &selectedOrphan() const { return m_selectedOrphan; }
    [[nodiscard]] const QString &searchText() const { return m_searchText; }
    [[nodiscard]] const std::optional<ScanResult> &scanResult() const { return m_scanResult; }
    [[nodiscard]] const QSet<QString> &selectedItemIDs() const { return m_selectedItemIDs; }
    [[nodiscard]] bool isLoadingApps() const { return m_isLoadingApps; }
    [[nodiscard]] bool isScanning() const { return m_isScanning; }
    [[nodiscard]] bool isScanningOrphans() const { return m_isScanningOrphans; }
    [[nodiscard]] bool isDeleting() const { return m_isDeleting; }
    [[nodiscard]] const std::optional<QString> &statusMessage() const { return m_statusMessage; }
    [[nodiscard]] bool showDeleteConfirmation() const { return m_showDeleteConfirmation; }
    [[nodiscard]] bool showUncertainMatches() const { return m_showUncertainMatches; }
    [[nodiscard]] bool isDropProcessing() const { return m_isDropProcessing; }
    [[nodiscard]] const std::optional<DeletionReport> &lastDeletionReport() const { return m_lastDeletionReport; }
    [[nodiscard]] const std::optional<AppUpdateInfo> &availableUpdate() const { return m_availableUpdate; }
    [[nodiscard]] bool isCheckingForUpdate() const { return m_isCheckingForUpdate; }
    [[nodiscard]] const QList<TrashedItem> &lastRemoval() const { return m_lastRemoval; }
    [[nodiscard]] bool canPutBack() const { return !m_lastRemoval.isEmpty(); }
    [[nodiscard]] bool isPuttingBack() const { return m_isPuttingBack; }
    [[nodiscard]] const std::optional<RestoreReport> &lastPutBackReport() const { return m_lastPutBackReport; }
    [[nodiscard]] bool offersFullDiskAccess() const { return m_offersFullDiskAccess; }

    void setSearchText(const QString &text);
    void setShowDeleteConfirmation(bool show);
    void setShowUncertainMatches(bool show);

    [[nodiscard]] QList<OrphanedAppGroup> visibleOrphans() const;
    [[nodiscard]] QList<InstalledApp> filteredApps() const;
    [[nodiscard]] QList<OrphanedAppGroup> filteredOrphans() const;
    [[nodiscard]] std::optional<ScanResult> activeScanResult() const;
    [[nodiscard]] QList<LeftoverItem> selectedItems() const;
    [[nodiscard]] qint64 selectedTotalSize() const;
    [[nodiscard]] QString formattedSelectedTotalSize() const;
    [[nodiscard]] QString moveToTrashText() const;
    [[nodiscard]] QString trashConfirmationText() const;
    [[nodiscard]] QString shownAppsText() const;
    [[nodiscard]] QString shownOrphansText() const;

    // QML reads of the fields above.
    [[nodiscard]] InstalledAppListModel *appsModel() { return &m_appsModel; }
    [[nodiscard]] QVariantMap selectedAppValue() const;
    [[nodiscard]] OrphanGroupListModel *orphanedGroupsModel() { return &m_orphanedGroupsModel; }
    [[nodiscard]] QVariantMap selectedOrphanValue() const;
    [[nodiscard]] ScanResultValue scanResultValue() const { return ScanResultValue(m_scanResult); }
    [[nodiscard]] QStringList selectedItemIDList() const;
    [[nodiscard]] QString statusText() const { return m_statusMessage.value_or(QString()); }
    [[nodiscard]] bool hasStatusMessage() const { return m_statusMessage.has_value(); }
    [[nodiscard]] DeletionReportValue lastDeletionReportValue() const { return DeletionReportValue(m_lastDeletionReport); }
    [[nodiscard]] DeletionReportValue lastPutBackReportValue() const;
    [[nodiscard]] UpdateValue availableUpdateValue() const { return UpdateValue(m_availableUpdate); }
    [[nodiscard]] OrphanGroupListModel *visibleOrphansModel() { return &m_visibleOrphansModel; }
    [[nodiscard]] InstalledAppListModel *filteredAppsModel() { return &m_filteredAppsModel; }
    [[nodiscard]] OrphanGroupListModel *filteredOrphansModel() { return &m_filteredOrphansModel; }
    [[nodiscard]] ScanResultValue activeScanResultValue() const { return ScanResultValue(activeScanResult()); }
    [[nodiscard]] LeftoverItemListModel *activeItemsModel() { return &m_activeItemsModel; }
    [[nodiscard]] LeftoverItemListModel *selectedItemsModel() { return &m_selectedItemsModel; }

    Q_INVOKABLE void loadApps();
    void selectApp(const InstalledApp &app);
    Q_INVOKABLE void scanSelectedApp();
    Q_INVOKABLE void switchSidebarMode(SidebarModes::Mode mode);
    Q_INVOKABLE void scanForRemovedApps();
    void selectOrphan(const OrphanedAppGroup &group);

    void setSelection(LeftoverCategory category, bool isSelected);
    Q_INVOKABLE void selectAll();
    Q_INVOKABLE void deselectAll();
    Q_INVOKABLE void confirmDelete();
    Q_INVOKABLE void deleteSelectedItems();
    Q_INVOKABLE void putBackLastRemoval();

    Q_INVOKABLE void handleDroppedApp(const QUrl &url);
    Q_INVOKABLE void checkForUpdates(bool userInitiated);
    Q_INVOKABLE void dismissAvailableUpdate();
    Q_INVOKABLE void openAvailableUpdateDownload();
    Q_INVOKABLE void openFullDiskAccessSettings();

    // The mode picker's labels, which QML cannot reach through the namespace.
    Q_INVOKABLE static QString sidebarModeTitle(SidebarModes::Mode mode) { return SidebarModes::rawValue(mode); }

    // The lists hand over a row's id; an id that is not found selects nothing.
    Q_INVOKABLE void selectAppById(const QString &id);
    Q_INVOKABLE void selectOrphanById(const QString &id);
    Q_INVOKABLE void toggleItemSelection(const QString &itemID);
    Q_INVOKABLE void setCategorySelection(const QString &categoryRawValue, bool isSelected);

Q_SIGNALS:
    void sidebarModeChanged();
    void appsChanged();
    void selectedAppChanged();
    void orphanedGroupsChanged();
    void selectedOrphanChanged();
    void searchTextChanged();
    void scanResultChanged();
    void selectedItemIDsChanged();
    void isLoadingAppsChanged();
    void isScanningChanged();
    void isScanningOrphansChanged();
    void isDeletingChanged();
    void statusMessageChanged();
    void showDeleteConfirmationChanged();
    void showUncertainMatchesChanged();
    void isDropProcessingChanged();
    void lastDeletionReportChanged();
    void availableUpdateChanged();
    void isCheckingForUpdateChanged();
    void canPutBackChanged();
    void isPuttingBackChanged();
    void lastPutBackReportChanged();
    void activeScanResultChanged();
    void selectedItemsChanged();
    void sidebarListsChanged();

private:
    // Assignments: each one notifies, also for an equal value, as views expect one signal per write.
    void setSidebarMode(SidebarMode mode);
    void setApps(const QList<InstalledApp> &apps);
    void setSelectedApp(const std::optional<InstalledApp> &app);
    void setOrphanedGroups(const QList<OrphanedAppGroup> &groups);
    void setSelectedOrphan(const std::optional<OrphanedAppGroup> &group);
    void setScanResult(const std::optional<ScanResult> &result);
    void setSelectedItemIDs(const QSet<QString> &ids);
    void setIsLoadingApps(bool value);
    void setIsScanning(bool value);
    void setIsScanningOrphans(bool value);
    void setIsDeleting(bool value);
    void setStatusMessage(const std::optional<QString> &message);
    void setIsDropProcessing(bool value);
    void setLastDeletionReport(const std::optional<DeletionReport> &report);
    void setAvailableUpdate(const std::optional<AppUpdateInfo> &update);
    void setIsCheckingForUpdate(bool value);

    void applyOrphanSelection(const QList<OrphanedAppGroup> &groups);
    void refreshDerived();

    void applyLoadedApps(const QList<InstalledApp> &apps);
    void applyScan(const ScanResult &result);
    void applyRemovedAppScan(const QList<OrphanedAppGroup> &groups);
    struct DeletionContext {
        std::optional<InstalledApp> app;
        SidebarMode mode = SidebarMode::Installed;
        bool bundleAmongItems = false;
    };
    void startDeletion(const QList<LeftoverItem> &items, const DeletionContext &context);
    void applyDeletion(const DeletionReport &report, const DeletionContext &context);
    void checkLibraryAccessOnce();
    void applyReloadAfterDeletion(const QList<InstalledApp> &apps, const DeletionContext &context);
    void applyRescanAfterDeletion(const QList<OrphanedAppGroup> &groups);
    void applyPutBack(const RestoreReport &report, SidebarMode mode);
    void applyDroppedApp(const std::optional<InstalledApp> &app);
    void applyDroppedAppScan(const ScanResult &result, const InstalledApp &app);
    void applyUpdateCheck(const std::optional<AppUpdateInfo> &update, bool userInitiated);

    // Runs apply on this object's thread when the future ends; a cancelled or failed task applies an
    // empty value, so no busy flag stays up.
    template<typename T, typename Apply>
    void whenDone(QFuture<T> future, Apply apply);

    AppViewModelServices m_services;

    SidebarMode m_sidebarMode = SidebarMode::Installed;
    QList<InstalledApp> m_apps;
    std::optional<InstalledApp> m_selectedApp;
    QList<OrphanedAppGroup> m_orphanedGroups;
    std::optional<OrphanedAppGroup> m_selectedOrphan;
    QString m_searchText;
    std::optional<ScanResult> m_scanResult;
    QSet<QString> m_selectedItemIDs;
    bool m_isLoadingApps = false;
    bool m_isScanning = false;
    bool m_isScanningOrphans = false;
    bool m_isDeleting = false;
    std::optional<QString> m_statusMessage;
    bool m_showDeleteConfirmation = false;
    bool m_showUncertainMatches = false;
    bool m_isDropProcessing = false;
    std::optional<DeletionReport> m_lastDeletionReport;
    std::optional<AppUpdateInfo> m_availableUpdate;
    bool m_isCheckingForUpdate = false;
    bool m_updateDismissedForSession = false;
    QList<TrashedItem> m_lastRemoval;
    bool m_isPuttingBack = false;
    std::optional<RestoreReport> m_lastPutBackReport;
    bool m_libraryAccessChecked = false;
    bool m_offersFullDiskAccess = false;

    InstalledAppListModel m_appsModel;
    OrphanGroupListModel m_orphanedGroupsModel;
    OrphanGroupListModel m_visibleOrphansModel;
    InstalledAppListModel m_filteredAppsModel;
    OrphanGroupListModel m_filteredOrphansModel;
    LeftoverItemListModel m_activeItemsModel;
    LeftoverItemListModel m_selectedItemsModel;
    std::optional<ScanResult> m_lastActiveScanResult;
    QList<LeftoverItem> m_lastSelectedItems;
    // The inputs the sidebar lists were last built from: rebuilding and comparing thousands of groups
    // on every tick would stall the window.
    struct SidebarInputs {
        QList<InstalledApp> apps;
        QList<OrphanedAppGroup> groups;
        bool showUncertainMatches = false;
        QString searchText;
        bool built = false;
    } m_sidebarInputs;
};
