// SPDX-License-Identifier: MIT
#include "Futures.h"
#include "TestSupport.h"
#include "state/AppViewModel.h"

#include <QAbstractItemModelTester>
#include <QPromise>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>

namespace {

// Tasks the test finishes by hand, in any order.
template<typename T>
struct HeldTasks {
    QList<std::shared_ptr<QPromise<T>>> promises;

    QFuture<T> start()
    {
        promises.append(std::make_shared<QPromise<T>>());
        promises.last()->start();
        return promises.last()->future();
    }
    void finish(int index, const T &value)
    {
        promises.at(index)->addResult(value);
        promises.at(index)->finish();
    }
    [[nodiscard]] int count() const { return int(promises.size()); }
};

struct Fakes {
    HeldTasks<QList<InstalledApp>> discovery;
    HeldTasks<ScanResult> scans;
    QList<InstalledApp> scannedApps;
    HeldTasks<QList<OrphanedAppGroup>> removedScans;
    HeldTasks<DeletionReport> trashRuns;
    QList<QList<LeftoverItem>> trashedItems;
    HeldTasks<std::optional<AppUpdateInfo>> updateChecks;
    HeldTasks<RestoreReport> putBacks;
    QList<QList<TrashedItem>> putBackItems;
    HeldTasks<std::optional<QString>> removabilityChecks;
    HeldTasks<bool> accessChecks;
    int sounds = 0;

    // The dropped-bundle reader stays real: the drop cases build bundles in a temporary folder.
    AppViewModelServices services()
    {
        AppViewModelServices s;
        s.discoverInstalledApps = [this] { return discovery.start(); };
        s.scanApp = [this](const InstalledApp &app) { scannedApps.append(app); return scans.start(); };
        s.scanRemovedApps = [this] { return removedScans.start(); };
        s.moveToTrash = [this](const QList<LeftoverItem> &items) { trashedItems.append(items); return trashRuns.start(); };
        s.putBack = [this](const QList<TrashedItem> &items) { putBackItems.append(items); return putBacks.start(); };
        s.playDeletionComplete = [this] { ++sounds; };
        s.checkForUpdate = [this] { return updateChecks.start(); };
        s.currentVersion = [] { return QStringLiteral("1.2.0"); };
        s.openUrl = [](const QUrl &) {};
        s.checkBundleRemovable = [this](const InstalledApp &) { return removabilityChecks.start(); };
        s.isLibraryAccessRefused = [this] { return accessChecks.start(); };
        s.canOpenFullDiskAccessSettings = [] { return true; };
        s.openFullDiskAccessSettings = [] {};
        return s;
    }
};

InstalledApp app(const QString &name)
{
    const QString path = QStringLiteral("/Applications/%1.app").arg(name);
    return InstalledApp{path, name, QUrl::fromLocalFile(path), QStringLiteral("com.example.") + name, 100};
}

LeftoverItem item(const QString &path, LeftoverCategory category = LeftoverCategory::caches) { return LeftoverItem::at(path, category, 1000); }

OrphanedAppGroup group(const QString &name, OrphanConfidence confidence, int itemCount = 2)
{
    OrphanedAppGroup g{QStringLiteral("id.") + name, name, QStringLiteral("com.example.") + name, confidence, QStringLiteral("evidence"), {}};
    for (int i = 0; i < itemCount; ++i)
        g.items.append(item(QStringLiteral("/Users/ann/Library/Caches/%1/%2").arg(name).arg(i)));
    return g;
}

// The column of one role, by the role's name, as a view reads it.
QVariantList column(const QAbstractItemModel *list, const QByteArray &roleName)
{
    const int role = list->roleNames().key(roleName, -1);
    QVariantList values;
    for (int row = 0; row < list->rowCount(); ++row)
        values.append(list->index(row, 0).data(role));
    return values;
}

// The bundle itself, then the leftovers.
ScanResult resultOf(const InstalledApp &a, int leftovers)
{
    ScanResult result{{LeftoverItem::at(a.id, LeftoverCategory::application, a.size)}};
    for (int i = 0; i < leftovers; ++i)
        result.items.append(item(QStringLiteral("/Users/ann/Library/Caches/%1/%2").arg(a.name).arg(i)));
    return result;
}

} // namespace

// The child process of exitWithAResultUndelivered: leaves with a task still running.
int exitWithATaskUnderWay(const QStringList &)
{
    int argc = 1;
    char name[] = "child", *argv[] = {name, nullptr};
    QCoreApplication application(argc, argv);
    Fakes fakes;
    AppViewModelServices services = fakes.services();
    services.discoverInstalledApps = [] {
        return QtConcurrent::run([] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            return QList<InstalledApp>{};
        });
    };
    AppViewModel exiting(services);
    exiting.loadApps();
    QThreadPool::globalInstance()->waitForDone();
    return 0;
}

class AppViewModelTest : public QObject {
    Q_OBJECT

    // Declared in the order they are built; destroyed testers first, fakes last.
    std::unique_ptr<Fakes> m_fakes;
    std::unique_ptr<AppViewModel> m_model;
    QList<std::shared_ptr<QAbstractItemModelTester>> m_testers;

    AppViewModel &model() { return *m_model; }
    Fakes &fakes() { return *m_fakes; }
    QString status() const { return m_model->statusMessage().value_or(QStringLiteral("<none>")); }
    const InstalledApp alpha = app(QStringLiteral("Alpha"));

    // Installed mode with apps loaded and the first one scanned, everything ticked.
    void loadAndScan(const QList<InstalledApp> &apps, const ScanResult &result)
    {
        model().loadApps();
        fakes().discovery.finish(fakes().discovery.count() - 1, apps);
        model().scanSelectedApp();
        fakes().scans.finish(fakes().scans.count() - 1, result);
    }

    // Alpha alone, scanned with this many leftovers.
    ScanResult scanAlpha(int leftovers)
    {
        loadAndScan({alpha}, resultOf(alpha, leftovers));
        return resultOf(alpha, leftovers);
    }

    void enterRemovedMode(const QList<OrphanedAppGroup> &groups)
    {
        model().switchSidebarMode(SidebarMode::Removed);
        fakes().removedScans.finish(fakes().removedScans.count() - 1, groups);
    }

private Q_SLOTS:
    void init()
    {
        m_testers.clear();
        m_model.reset();
        m_fakes = std::make_unique<Fakes>();
        m_model = std::make_unique<AppViewModel>(m_fakes->services());
        for (QAbstractItemModel *list : std::initializer_list<QAbstractItemModel *>{
                 m_model->appsModel(), m_model->orphanedGroupsModel(), m_model->visibleOrphansModel(),
                 m_model->filteredAppsModel(), m_model->filteredOrphansModel(), m_model->activeItemsModel(),
                 m_model->selectedItemsModel()})
            m_testers.append(std::make_shared<QAbstractItemModelTester>(list, QAbstractItemModelTester::FailureReportingMode::QtTest));
    }

    void loadScanAndReload()
    {
        // Nothing starts on its own, and a scan with nothing selected changes nothing.
        model().scanSelectedApp();
        QCOMPARE(fakes().discovery.count() + fakes().scans.count() + fakes().updateChecks.count(), 0);
        QVERIFY(!model().statusMessage());

        const QList<InstalledApp> apps{alpha, app(QStringLiteral("Beta"))};
        model().loadApps();
        fakes().discovery.finish(0, apps);
        QCOMPARE(model().selectedApp(), apps.at(0));
        model().scanSelectedApp();
        QVERIFY(model().isScanning());
        QCOMPARE(status(), QStringLiteral("Scanning for leftover files…"));
        fakes().scans.finish(0, resultOf(apps.at(0), 2));
        QCOMPARE(model().selectedItems(), resultOf(apps.at(0), 2).items);
        QCOMPARE(status(), QStringLiteral("Found 3 related items (2 KB)."));
        // Every Library folder readable: the line stays as it is.
        QSignalSpy statusChanges(&model(), &AppViewModel::statusMessageChanged);
        fakes().accessChecks.finish(0, false);
        QVERIFY(statusChanges.isEmpty() && !model().offersFullDiskAccess());

        // A reload keeps the earlier record of an app still installed, and its result and ticks.
        InstalledApp grown = apps.at(0);
        grown.size = 999;
        model().loadApps();
        QVERIFY(model().isLoadingApps());
        fakes().discovery.finish(1, {apps.at(1), grown});
        QVERIFY(!model().isLoadingApps());
        QCOMPARE(model().selectedApp(), apps.at(0));
        QCOMPARE(model().selectedItemIDs().size(), 3);

        // Overlapping scans apply in the order they end: the earlier one ends last and wins, whatever
        // is selected now.
        model().scanSelectedApp();
        model().selectApp(apps.at(1));
        model().scanSelectedApp();
        QCOMPARE(fakes().scannedApps, (QList<InstalledApp>{apps.at(0), apps.at(0), apps.at(1)}));
        fakes().scans.finish(2, ScanResult{});
        QVERIFY(!model().isScanning() && model().scanResult() && model().selectedItemIDs().isEmpty());
        QCOMPARE(status(), QStringLiteral("Found 0 related items (Zero KB)."));
        fakes().scans.finish(1, resultOf(apps.at(0), 3));
        QCOMPARE(model().scanResult(), resultOf(apps.at(0), 3));
        QCOMPARE(model().selectedApp(), apps.at(1));
        QCOMPARE(status(), QStringLiteral("Found 4 related items (3 KB)."));
        model().loadApps();
        fakes().discovery.finish(2, {});
        QVERIFY(!model().selectedApp() && model().apps().isEmpty());
        // The window binds to the fields of no app too: each is there, empty, never undefined.
        QCOMPARE(model().selectedAppValue().value(QStringLiteral("bundleIdentifier")).metaType(), QMetaType::fromType<QString>());
    }

    // The window closed mid-task: at exit Qt destroys the result still waiting in the event queue
    // while it holds the queue's lock, and the model must post nothing then or the program never ends.
    void exitWithAResultUndelivered() { QCOMPARE(TestSupport::runChild({}).exitCode, 0); }

    void tasksDoneBeforeTheCallReturnsStillShowTheirProgress()
    {
        // A task can end on its worker before the model attaches to it; the "under way" state must
        // still be there when the call returns, and the result must follow.
        const QList<OrphanedAppGroup> groups{group(QStringLiteral("Gone"), OrphanConfidence::high)};
        AppViewModelServices services = fakes().services();
        services.discoverInstalledApps = [a = alpha] { return finished(QList<InstalledApp>{a}); };
        services.scanApp = [a = alpha](const InstalledApp &) { return finished(resultOf(a, 2)); };
        services.scanRemovedApps = [groups] { return finished(groups); };
        AppViewModel ready(services);

        ready.loadApps();
        QVERIFY(ready.isLoadingApps());
        QTRY_VERIFY(!ready.isLoadingApps() && ready.selectedApp() == alpha);
        ready.scanSelectedApp();
        QVERIFY(ready.isScanning());
        QTRY_COMPARE(ready.scanResult(), resultOf(alpha, 2));
        ready.switchSidebarMode(SidebarMode::Removed);
        QVERIFY(ready.isScanningOrphans());
        QCOMPARE(ready.statusMessage(), QStringLiteral("Scanning Library for leftovers from removed apps…"));
        QTRY_COMPARE(ready.selectedOrphan(), groups.at(0));
        QVERIFY(!ready.isScanningOrphans());
    }

    void removedScanStatus()
    {
        using C = OrphanConfidence;
        const QList<OrphanedAppGroup> groups{group(QStringLiteral("High"), C::high, 3), group(QStringLiteral("Med"), C::medium),
                                             group(QStringLiteral("Med2"), C::medium), group(QStringLiteral("Low"), C::uncertain),
                                             group(QStringLiteral("Low2"), C::uncertain)};
        enterRemovedMode(groups);
        QCOMPARE(status(), QStringLiteral("Showing 3 removed app matches. 2 uncertain matches hidden."));
        QCOMPARE(model().selectedOrphan(), groups.at(0));
        QCOMPARE(model().selectedItemIDs().size(), 3); // every item of the selected group
        model().scanForRemovedApps();
        fakes().removedScans.finish(1, {});
        QCOMPARE(status(), QStringLiteral("No confident leftovers from removed apps were found."));
        QVERIFY(!model().selectedOrphan() && model().selectedItemIDs().isEmpty());
    }

    void modeSwitchReusesGroups()
    {
        const QList<OrphanedAppGroup> groups{group(QStringLiteral("Old"), OrphanConfidence::uncertain),
                                             group(QStringLiteral("Gone"), OrphanConfidence::high, 3)};
        scanAlpha(1);
        model().setSearchText(QStringLiteral("al"));
        enterRemovedMode(groups);
        QCOMPARE(status(), QStringLiteral("Showing 1 removed app match. 1 uncertain match hidden."));
        QVERIFY(!model().selectedApp() && model().searchText().isEmpty());
        QCOMPARE(model().visibleOrphans(), QList<OrphanedAppGroup>{groups.at(1)});
        model().switchSidebarMode(SidebarMode::Installed);
        QVERIFY(!model().selectedApp() && !model().activeScanResult() && !model().selectedOrphan());
        model().switchSidebarMode(SidebarMode::Removed);
        QCOMPARE(fakes().removedScans.count(), 1);
        QCOMPARE(model().selectedOrphan(), groups.at(1));
        QCOMPARE(model().selectedItems(), groups.at(1).items);
        QVERIFY(!model().statusMessage());

        // Showing uncertain groups brings them back in place; hiding them moves a hidden selection on,
        // in the one write the switch makes.
        model().setShowUncertainMatches(true);
        QCOMPARE(model().filteredOrphans(), groups);
        model().selectOrphan(groups.at(0));
        QCOMPARE(status(), QStringLiteral("Found 2 leftover items (2 KB)."));
        model().setShowUncertainMatches(false);
        QCOMPARE(model().selectedOrphan(), groups.at(1));
        QCOMPARE(model().selectedItems(), groups.at(1).items);
    }

    void tickingItemsAndCategories()
    {
        ScanResult result = resultOf(alpha, 2);
        result.items.insert(1, item(QStringLiteral("/Users/ann/Library/Preferences/alpha.plist"), LeftoverCategory::preferences));
        loadAndScan({alpha}, result);
        model().setCategorySelection(QStringLiteral("Caches"), false); // by title, as the section boxes call
        QCOMPARE(model().selectedItems(), result.items.mid(0, 2));
        // Rows follow the category order, not the result's; each category's first row carries its header.
        const LeftoverItemListModel *rows = model().activeItemsModel();
        QCOMPARE(column(rows, "id"), (QVariantList{result.items.at(0).id, result.items.at(2).id, result.items.at(3).id, result.items.at(1).id}));
        QCOMPARE(column(rows, "opensSection"), (QVariantList{true, true, false, true}));
        QCOMPARE(column(rows, "sectionSummary"), (QVariantList{"1 items • 100 bytes", "2 items • 2 KB", "2 items • 2 KB", "1 items • 1 KB"}));
        QCOMPARE(column(rows, "sectionAllSelected"), (QVariantList{true, false, false, true}));

        // A tick changes one row's box and its category's header, announced as such: the views redraw
        // a row only on its own dataChanged.
        QSignalSpy changes(rows, &QAbstractItemModel::dataChanged);
        model().toggleItemSelection(result.items.at(3).id);
        const auto changedRows = [&changes](LeftoverItemListModel::Role role) {
            QSet<int> changed;
            for (const QList<QVariant> &signal : std::as_const(changes)) {
                const QList<int> roles = signal.at(2).value<QList<int>>();
                for (int row = signal.at(0).toModelIndex().row(); roles.contains(int(role)) && row <= signal.at(1).toModelIndex().row(); ++row)
                    changed.insert(row);
            }
            return changed;
        };
        QCOMPARE(changedRows(LeftoverItemListModel::Role::isSelected), QSet<int>{2});
        QCOMPARE(changedRows(LeftoverItemListModel::Role::sectionAllSelected), QSet<int>());
        model().toggleItemSelection(result.items.at(2).id);
        QCOMPARE(changedRows(LeftoverItemListModel::Role::sectionAllSelected), (QSet<int>{1, 2}));
        QCOMPARE(column(rows, "isSelected"), (QVariantList{true, true, true, true}));
        model().toggleItemSelection(result.items.at(0).id);
        model().setSelection(LeftoverCategory::caches, true);
        QCOMPARE(model().selectedItems(), result.items.mid(1));
        QCOMPARE(model().selectedTotalSize(), 3000);

        // The delete button and the confirmation count what is ticked in the result on screen, nothing
        // else. "Items" stays plural for one item: that is the window's wording.
        model().toggleItemSelection(QStringLiteral("/elsewhere"));
        QCOMPARE(model().moveToTrashText(), QStringLiteral("Move 3 Items to Trash"));
        QCOMPARE(model().trashConfirmationText(),
                 QStringLiteral("This will move 3 items (3 KB) to the Trash. You'll hear a sound when cleanup finishes."));
        model().setSelection(LeftoverCategory::caches, false);
        QCOMPARE(model().moveToTrashText(), QStringLiteral("Move 1 Items to Trash"));
        QCOMPARE(model().trashConfirmationText(),
                 QStringLiteral("This will move 1 items (1 KB) to the Trash. You'll hear a sound when cleanup finishes."));
        model().toggleItemSelection(result.items.at(1).id);
        QCOMPARE(model().moveToTrashText(), QStringLiteral("Move 0 Items to Trash"));
        QCOMPARE(model().trashConfirmationText(), QStringLiteral("Review the scan results before moving items to the Trash."));
    }

    // The sidebar search matches names and bundle identifiers, ignoring letter case, in both modes.
    void searchMatchesNamesAndIdentifiers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("apps");
        QTest::addColumn<QStringList>("groups");
        QTest::newRow("name") << "alp" << QStringList{"Alpha"} << QStringList{"Alpha Gone"};
        QTest::newRow("identifier only") << "COM.EXAMPLE.B" << QStringList{"Beta"} << QStringList{"Beta Gone"};
        QTest::newRow("vendor of both") << "example" << QStringList{"Alpha", "Beta"} << QStringList{"Alpha Gone", "Beta Gone"};
        QTest::newRow("nothing") << "zzz" << QStringList{} << QStringList{};
    }
    void searchMatchesNamesAndIdentifiers()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, apps);
        QFETCH(QStringList, groups);
        loadAndScan({alpha, app(QStringLiteral("Beta"))}, resultOf(alpha, 0));
        OrphanedAppGroup alphaGone = group(QStringLiteral("Alpha Gone"), OrphanConfidence::high);
        alphaGone.bundleIdentifier = QStringLiteral("com.example.AlphaGone");
        OrphanedAppGroup betaGone = group(QStringLiteral("Beta Gone"), OrphanConfidence::high);
        betaGone.bundleIdentifier = QStringLiteral("com.example.BetaGone");
        enterRemovedMode({alphaGone, betaGone});
        model().setSearchText(text);
        QCOMPARE(QVariant(column(model().filteredAppsModel(), "name")).toStringList(), apps);
        QCOMPARE(QVariant(column(model().filteredOrphansModel(), "displayName")).toStringList(), groups);
        QCOMPARE(model().shownAppsText(), QStringLiteral("%1 shown").arg(apps.size()));
    }

    // What another app or macOS owns is listed unticked, with its owner; the user may still tick it.
    void claimedItemsStartUnticked()
    {
        ScanResult result = resultOf(alpha, 2);
        result.items[2].claimedBy = ItemOwner{QStringLiteral("Beta"), QStringLiteral("com.example.Beta"), QStringLiteral("named as the app")};
        result.items.append(item(QStringLiteral("/Users/ann/Library/Caches/com.apple.helpd")));
        result.items.last().claimedBy = ItemOwner{QStringLiteral("macOS"), std::nullopt, QStringLiteral("in Apple's com.apple. namespace")};
        loadAndScan({alpha}, result);
        QCOMPARE(model().selectedItems(), result.items.mid(0, 2));
        QCOMPARE(column(model().activeItemsModel(), "owner"), (QVariantList{"", "", "Belongs to Beta", "Part of macOS"}));
        const QString howFound = column(model().activeItemsModel(), "howFound").at(2).toString();
        QVERIFY2(howFound.endsWith(QLatin1String("Belongs to Beta: named as the app")), qPrintable(howFound));
        model().setCategorySelection(QStringLiteral("Caches"), true);
        QCOMPARE(model().selectedItems(), result.items);
    }

    // Each run's line, the sound when anything moved, and the rescan of an app still installed, which
    // ticks what is left. A run that moves everything is putBack's first. A warning line names the path
    // once: GIO's own messages already name it.
    void deletionOutcome()
    {
        const auto warning = [this] { return model().lastDeletionReportValue().failures.value(0).toMap().value(QStringLiteral("line")).toString(); };
        const ScanResult result = scanAlpha(3);
        model().toggleItemSelection(result.items.at(0).id); // the bundle stays
        model().deleteSelectedItems();
        QVERIFY(model().isDeleting() && status() == QStringLiteral("Moving selected items to Trash…"));
        QCOMPARE(fakes().trashedItems, QList<QList<LeftoverItem>>{result.items.mid(1)});
        fakes().trashRuns.finish(0, DeletionReport{result.items.mid(1, 2), {{result.items.at(3), QStringLiteral("Permission denied")}}});
        QVERIFY(!model().isDeleting());
        QCOMPARE(status(), QStringLiteral("Moved 2 items to Trash. 1 could not be removed."));
        QCOMPARE(warning(), result.items.at(3).path() + QStringLiteral(": Permission denied"));
        QCOMPARE(fakes().sounds, 1);
        QCOMPARE(fakes().scans.count(), 1); // the rescan waits for the reload

        fakes().discovery.finish(1, {alpha});
        QCOMPARE(fakes().scans.count(), 2);
        const ScanResult left = resultOf(alpha, 1);
        fakes().scans.finish(1, left);
        QCOMPARE(model().selectedItems(), left.items);
        model().toggleItemSelection(left.items.at(0).id);
        model().deleteSelectedItems();
        const QString named = QStringLiteral("Unable to trash file “%1”: Permission denied").arg(left.items.at(1).path());
        fakes().trashRuns.finish(1, DeletionReport{{}, {{left.items.at(1), named}}});
        QCOMPARE(warning(), named);
        QCOMPARE(status(), QStringLiteral("Moved 0 items to Trash. 1 could not be removed."));
        QCOMPARE(fakes().sounds, 1);
    }

    // The bundle is checked before anything moves: one that cannot go stops the run with everything still
    // ticked; once it has gone (even if moving it then failed) the app is treated as gone.
    void deletingTheBundle()
    {
        const InstalledApp beta = app(QStringLiteral("Beta"));
        const ScanResult result = resultOf(alpha, 1);
        loadAndScan({alpha, beta}, result);
        model().deleteSelectedItems();
        QVERIFY(model().isDeleting());
        const QString obstacle = QStringLiteral("Nothing was moved: Alpha can't go to the Trash.");
        fakes().removabilityChecks.finish(0, obstacle);
        QVERIFY(!model().isDeleting() && fakes().trashRuns.count() == 0 && fakes().sounds == 0);
        QCOMPARE(status(), obstacle);
        QCOMPARE(model().selectedItems(), result.items);

        model().deleteSelectedItems();
        QCOMPARE(fakes().trashRuns.count(), 0);
        fakes().removabilityChecks.finish(1, std::nullopt);
        fakes().trashRuns.finish(0, DeletionReport{{result.items.at(1)}, {{result.items.at(0), QStringLiteral("Busy")}}});
        fakes().discovery.finish(1, {beta, alpha});
        QCOMPARE(fakes().scans.count(), 1);
        QCOMPARE(model().selectedApp(), beta);
        QVERIFY(!model().scanResult() && model().selectedItemIDs().isEmpty());

        // Nothing ticked: no task starts and nothing changes.
        QSignalSpy anyStatus(&model(), &AppViewModel::statusMessageChanged);
        model().deleteSelectedItems();
        QCOMPARE(fakes().trashRuns.count(), 1);
        QCOMPARE(anyStatus.count(), 0);
    }

    // Told once per launch, appended to the scan's own line, with the settings button until the line changes.
    void fullDiskAccessHint()
    {
        scanAlpha(1);
        QCOMPARE(fakes().accessChecks.count(), 1);
        QSignalSpy statusChanges(&model(), &AppViewModel::statusMessageChanged);
        fakes().accessChecks.finish(0, true);
        QVERIFY(model().offersFullDiskAccess() && statusChanges.count() == 1);
        QCOMPARE(status(), QStringLiteral("Found 2 related items (1 KB). Some Library folders were not readable: "
                                          "Full Disk Access for Kestrune lets it see everything."));

        model().scanSelectedApp();
        QVERIFY(!model().offersFullDiskAccess());
        fakes().scans.finish(1, resultOf(alpha, 1));
        QCOMPARE(fakes().accessChecks.count(), 1);
        enterRemovedMode({group(QStringLiteral("Gone"), OrphanConfidence::high)});
        QCOMPARE(fakes().accessChecks.count(), 1);
    }

    // The rescan after each run decides what is selected next and what the status line says.
    void deletionInRemovedMode()
    {
        const OrphanedAppGroup gone = group(QStringLiteral("Gone"), OrphanConfidence::high, 3);
        const OrphanedAppGroup other = group(QStringLiteral("Other"), OrphanConfidence::medium, 4);
        enterRemovedMode({gone, other});
        model().deleteSelectedItems();
        QCOMPARE(fakes().trashedItems, QList<QList<LeftoverItem>>{gone.items});
        fakes().trashRuns.finish(0, DeletionReport{gone.items, {}});
        fakes().removedScans.finish(1, {other});
        QCOMPARE(model().selectedItems(), other.items);
        QCOMPARE(status(), QStringLiteral("Found 4 remaining items (4 KB)."));

        model().deleteSelectedItems();
        fakes().trashRuns.finish(1, DeletionReport{other.items, {}});
        fakes().removedScans.finish(2, {});
        QVERIFY(model().selectedItems().isEmpty() && model().lastDeletionReport());
        QCOMPARE(status(), QStringLiteral("All leftovers for that app were removed."));
    }

    // A removal can be put back until the next one; what stays in the Trash can be tried again, and the
    // lists catch up without hiding the outcome behind a scan's own status line.
    void putBack()
    {
        const ScanResult result = scanAlpha(3);
        QVERIFY(!model().canPutBack());
        model().putBackLastRemoval();
        QCOMPARE(fakes().putBacks.count(), 0);

        model().toggleItemSelection(result.items.at(0).id);
        model().deleteSelectedItems();
        const QList<LeftoverItem> leftovers = result.items.mid(1);
        const QStringList trashed{"/T/files/2", "/T/files/1", "/T/files/0"};
        QSignalSpy canPutBack(&model(), &AppViewModel::canPutBackChanged);
        fakes().trashRuns.finish(0, DeletionReport{leftovers, {}, trashed});
        QCOMPARE(status(), QStringLiteral("Moved 3 items to Trash."));
        QCOMPARE(fakes().sounds, 1);
        QVERIFY(model().canPutBack() && canPutBack.count() == 1);
        fakes().discovery.finish(1, {alpha});
        fakes().scans.finish(1, resultOf(alpha, 0));
        QVERIFY(model().canPutBack()); // the rescan's status line does not end the offer

        model().putBackLastRemoval();
        model().putBackLastRemoval(); // one at a time
        QVERIFY(model().isPuttingBack());
        QCOMPARE(status(), QStringLiteral("Putting back 3 items…"));
        QCOMPARE(fakes().putBackItems.size(), 1);
        const QList<TrashedItem> sent = fakes().putBackItems.at(0);
        QCOMPARE(sent, (QList<TrashedItem>{{leftovers.at(0), trashed.at(0)}, {leftovers.at(1), trashed.at(1)}, {leftovers.at(2), trashed.at(2)}}));

        fakes().putBacks.finish(0, RestoreReport{leftovers.mid(0, 2), {{leftovers.at(2), QStringLiteral("Something else is there")}}});
        QVERIFY(!model().isPuttingBack() && model().canPutBack());
        QCOMPARE(model().lastRemoval(), (QList<TrashedItem>{sent.at(2)}));
        QCOMPARE(model().lastPutBackReportValue().failedCount, 1);
        const QString outcome = QStringLiteral("Put back 2 items. 1 could not be put back.");
        QCOMPARE(status(), outcome);
        fakes().discovery.finish(2, {alpha});
        QCOMPARE(fakes().scannedApps.size(), 3);
        fakes().scans.finish(2, resultOf(alpha, 2));
        QCOMPARE(model().selectedItems(), resultOf(alpha, 2).items);
        QCOMPARE(status(), outcome);

        // The next removal replaces the offer, even one that moved nothing.
        model().deleteSelectedItems();
        fakes().removabilityChecks.finish(0, std::nullopt);
        fakes().trashRuns.finish(1, DeletionReport{{}, {{result.items.at(0), QStringLiteral("Busy")}}});
        QVERIFY(!model().canPutBack() && !model().lastPutBackReport());
    }

    // Dropped while the removed mode shows a group and a search is typed.
    void droppedApps()
    {
        QTemporaryDir folder;
        TestSupport::writeApp(folder.filePath(QStringLiteral("Shout.APP")), QStringLiteral("Shout"), QStringLiteral("com.example.Shout"));
        TestSupport::writeApp(folder.filePath(QStringLiteral("DropMe.app")), QStringLiteral("Drop Me"), QStringLiteral("com.example.DropMe"), 1000);
        enterRemovedMode({group(QStringLiteral("Gone"), OrphanConfidence::high)});
        model().setSearchText(QStringLiteral("Go"));
        const auto ticks = model().selectedItemIDs();
        QSignalSpy statusSpy(&model(), &AppViewModel::statusMessageChanged);
        QSignalSpy processing(&model(), &AppViewModel::isDropProcessingChanged);
        // A file that is no bundle, and a bundle the reader refuses (the drop zone ignores the
        // extension's letter case, the reader does not): only the status line changes.
        model().handleDroppedApp(QUrl::fromLocalFile(folder.filePath(QStringLiteral("DropMe.app/Contents/Info.plist"))));
        QCOMPARE(status(), QStringLiteral("Please drop a macOS app bundle (.app)."));
        model().handleDroppedApp(QUrl::fromLocalFile(folder.filePath(QStringLiteral("Shout.APP"))));
        QTRY_COMPARE(statusSpy.count(), 2);
        QCOMPARE(status(), QStringLiteral("Could not read the dropped app."));
        QCOMPARE(model().sidebarMode(), SidebarMode::Removed);
        QCOMPARE(model().selectedItemIDs(), ticks);
        QCOMPARE(processing.count(), 0);

        model().handleDroppedApp(QUrl::fromLocalFile(folder.filePath(QStringLiteral("DropMe.app"))));
        QTRY_COMPARE(fakes().scans.count(), 1);
        QVERIFY(model().isDropProcessing() && !model().isScanning());
        QCOMPARE(model().sidebarMode(), SidebarMode::Installed);
        QCOMPARE(model().searchText(), QStringLiteral("Go")); // not a mode switch: search and groups stay
        QCOMPARE(status(), QStringLiteral("Scanning Drop Me for leftover files…"));
        const ScanResult result = resultOf(*model().selectedApp(), 3);
        fakes().scans.finish(0, result);
        QVERIFY(!model().isDropProcessing() && model().showDeleteConfirmation());
        QCOMPARE(model().selectedItems(), result.items);
        QCOMPARE(status(), QStringLiteral("Ready to remove 4 items (4 KB) for Drop Me."));
    }

    // Downloading, dismissing and the found-on-request message are driven by the Qt Quick tests.
    void updates()
    {
        const AppUpdateInfo offer{QStringLiteral("2.0.1"), QUrl(QStringLiteral("https://example.com/k.dmg")), std::nullopt};
        // Found at start-up: the banner shows, the status line is untouched; a request meanwhile is refused silently.
        model().checkForUpdates(false);
        model().checkForUpdates(true);
        QCOMPARE(fakes().updateChecks.count(), 1);
        fakes().updateChecks.finish(0, offer);
        QCOMPARE(model().availableUpdate(), offer);
        QVERIFY(!model().statusMessage() && !model().isCheckingForUpdate());
        // Asked for, "nothing newer" clears the offer and says so.
        model().checkForUpdates(true);
        fakes().updateChecks.finish(1, std::nullopt);
        QVERIFY(!model().availableUpdate());
        QCOMPARE(status(), QStringLiteral("You're on the latest version (v1.2.0)."));
    }

    // The window can close with tasks under way: tasks that end afterwards, here or on a worker, on
    // time, failed or cancelled, touch nothing (a Debug build used to assert on the dead context).
    void destroyedWhileTasksRun()
    {
        model().loadApps();
        fakes().discovery.finish(0, {alpha});
        model().scanSelectedApp();
        model().switchSidebarMode(SidebarMode::Removed);
        model().checkForUpdates(true);
        QSignalSpy statusSpy(&model(), &AppViewModel::statusMessageChanged);
        m_testers.clear();
        m_model.reset();
        std::thread([this] { fakes().scans.finish(0, resultOf(alpha, 2)); }).join();
        fakes().removedScans.promises.at(0)->setException(std::make_exception_ptr(std::runtime_error("gone")));
        fakes().removedScans.promises.at(0)->finish();
        fakes().updateChecks.promises.at(0)->future().cancel();
        fakes().updateChecks.promises.at(0)->finish();
        QCoreApplication::processEvents();
        QCOMPARE(statusSpy.count(), 0);
    }
};

KESTRUNE_TEST_MAIN_WITH_CHILD(AppViewModelTest, exitWithATaskUnderWay)
#include "tst_appviewmodel.moc"
