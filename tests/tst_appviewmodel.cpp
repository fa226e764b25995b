// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "state/AppViewModel.h"

#include <QAbstractItemModelTester>
#include <QMetaProperty>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QPromise>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <stdexcept>

namespace {

// A task the test finishes by hand, in any order.
template<typename T>
struct HeldTasks {
    QList<std::shared_ptr<QPromise<T>>> promises;

    QFuture<T> start()
    {
        auto promise = std::make_shared<QPromise<T>>();
        promise->start();
        promises.append(promise);
        return promise->future();
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
    QList<QUrl> openedUrls;
    int sounds = 0;

    // The dropped-bundle reader stays real: the drop cases build bundles in a temporary folder.
    AppViewModelServices services()
    {
        AppViewModelServices s;
        s.discoverInstalledApps = [this] { return discovery.start(); };
        s.scanApp = [this](const InstalledApp &app) {
            scannedApps.append(app);
            return scans.start();
        };
        s.scanRemovedApps = [this] { return removedScans.start(); };
        s.moveToTrash = [this](const QList<LeftoverItem> &items) {
            trashedItems.append(items);
            return trashRuns.start();
        };
        s.playDeletionComplete = [this] { ++sounds; };
        s.checkForUpdate = [this] { return updateChecks.start(); };
        s.currentVersion = [] { return QStringLiteral("1.2.0"); };
        s.openUrl = [this](const QUrl &url) { openedUrls.append(url); };
        return s;
    }
};

InstalledApp app(const QString &name, std::optional<QString> identifier = std::nullopt, qint64 size = 100)
{
    const QString path = QStringLiteral("/Applications/%1.app").arg(name);
    return InstalledApp{path, name, QUrl::fromLocalFile(path), identifier, size};
}

LeftoverItem item(const QString &path, LeftoverCategory category = LeftoverCategory::caches, qint64 size = 1000)
{
    return LeftoverItem::at(path, category, size);
}

OrphanedAppGroup group(const QString &name, OrphanConfidence confidence, int itemCount = 2)
{
    OrphanedAppGroup g{QStringLiteral("id.") + name, name, QStringLiteral("com.example.") + name, confidence,
                       QStringLiteral("evidence"), {}};
    for (int i = 0; i < itemCount; ++i)
        g.items.append(item(QStringLiteral("/Users/ann/Library/Caches/%1/%2").arg(name).arg(i)));
    return g;
}

QSet<QString> idsOf(const QList<LeftoverItem> &items)
{
    QSet<QString> ids;
    for (const LeftoverItem &i : items)
        ids.insert(i.id);
    return ids;
}

ScanResult resultOf(const InstalledApp &a, int leftovers)
{
    ScanResult result{{LeftoverItem::at(a.id, LeftoverCategory::application, a.size)}};
    for (int i = 0; i < leftovers; ++i)
        result.items.append(item(QStringLiteral("/Users/ann/Library/Caches/%1/%2").arg(a.name).arg(i)));
    return result;
}

QString status(const AppViewModel &model)
{
    return model.statusMessage().value_or(QStringLiteral("<none>"));
}

} // namespace

// Names of the field notifications in the order they are sent; derived values are left out.
class FieldLog : public QObject {
    Q_OBJECT
public:
    explicit FieldLog(AppViewModel *model)
    {
        const QMetaMethod record = staticMetaObject.method(staticMetaObject.indexOfSlot("record()"));
        for (const char *field : {"sidebarMode", "apps", "selectedApp", "orphanedGroups", "selectedOrphan", "searchText",
                                  "scanResult", "selectedItemIDs", "isLoadingApps", "isScanning", "isScanningOrphans", "isDeleting",
                                  "statusMessage", "showDeleteConfirmation", "isDropProcessing", "lastDeletionReport",
                                  "availableUpdate", "isCheckingForUpdate"}) {
            const QMetaProperty property = model->metaObject()->property(model->metaObject()->indexOfProperty(field));
            QVERIFY2(connect(model, property.notifySignal(), this, record), field);
        }
    }
    QStringList take() { return std::exchange(entries, {}); }
    QStringList entries;

private Q_SLOTS:
    void record() { entries.append(QString::fromLatin1(sender()->metaObject()->method(senderSignalIndex()).name()).chopped(7)); }
};

// A bare root object for QML snippets, so the test needs no QML module beyond its own types.
class Probe : public QObject {
    Q_OBJECT
    QML_ELEMENT
};

class AppViewModelTest : public QObject {
    Q_OBJECT

    Fakes *m_fakes = nullptr;
    std::unique_ptr<AppViewModel> m_model;
    QList<std::shared_ptr<QAbstractItemModelTester>> m_testers;

    AppViewModel &model() { return *m_model; }
    Fakes &fakes() { return *m_fakes; }

    // Installed mode with apps loaded and the first one scanned, everything ticked.
    void loadAndScan(const QList<InstalledApp> &apps, const ScanResult &result)
    {
        model().loadApps();
        fakes().discovery.finish(fakes().discovery.count() - 1, apps);
        model().scanSelectedApp();
        fakes().scans.finish(fakes().scans.count() - 1, result);
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
        delete m_fakes;
        m_fakes = new Fakes;
        m_model = std::make_unique<AppViewModel>(m_fakes->services());
        for (QAbstractItemModel *list : std::initializer_list<QAbstractItemModel *>{
                 m_model->appsModel(), m_model->orphanedGroupsModel(), m_model->visibleOrphansModel(),
                 m_model->filteredAppsModel(), m_model->filteredOrphansModel(), m_model->activeItemsModel(),
                 m_model->activeCategoriesModel(), m_model->selectedItemsModel()}) {
            m_testers.append(std::make_shared<QAbstractItemModelTester>(
                list, QAbstractItemModelTester::FailureReportingMode::QtTest));
        }
    }

    void cleanupTestCase()
    {
        m_testers.clear();
        m_model.reset();
        delete m_fakes;
    }

    void startUpAndReload()
    {
        // Nothing starts on its own: the window asks.
        QCOMPARE(fakes().discovery.count(), 0);
        QCOMPARE(fakes().updateChecks.count(), 0);
        model().loadApps();
        QVERIFY(model().isLoadingApps());
        const QList<InstalledApp> apps{app(QStringLiteral("Alpha")), app(QStringLiteral("Beta"))};
        fakes().discovery.finish(0, apps);
        QCOMPARE(model().apps(), apps);
        QCOMPARE(model().selectedApp(), apps.first());
        QVERIFY(!model().isLoadingApps());

        // A reload keeps the earlier record of an app still installed, and its result and ticks.
        model().selectApp(apps.at(1));
        model().scanSelectedApp();
        fakes().scans.finish(0, resultOf(apps.at(1), 2));
        InstalledApp grown = apps.at(1);
        grown.size = 999;
        model().loadApps();
        QVERIFY(!model().statusMessage());
        fakes().discovery.finish(1, {apps.at(0), grown});
        QCOMPARE(model().selectedApp()->size, apps.at(1).size);
        QCOMPARE(model().selectedItemIDs().size(), 3);
        QVERIFY(model().scanResult());

        model().loadApps();
        fakes().discovery.finish(2, {});
        QVERIFY(!model().selectedApp());
        QVERIFY(model().apps().isEmpty());
    }

    // Typed lower-case text and a search that finds nothing are tst_SidebarView's.
    void search_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("empty keeps all in order") << QString() << QStringList{"Zed Pad", "alpha", "Mail", "NoId"};
        QTest::newRow("by identifier, any case") << QStringLiteral("COM.apple") << QStringList{"Mail"};
        QTest::newRow("one space is a search") << QStringLiteral(" ") << QStringList{"Zed Pad"};
        QTest::newRow("no identifier: name only") << QStringLiteral("noid") << QStringList{"NoId"};
    }

    void search()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, expected);
        model().loadApps();
        fakes().discovery.finish(0, {app(QStringLiteral("Zed Pad"), QStringLiteral("org.zed")),
                                     app(QStringLiteral("alpha"), QStringLiteral("net.alpha")),
                                     app(QStringLiteral("Mail"), QStringLiteral("com.apple.mail")),
                                     app(QStringLiteral("NoId"))});
        model().setSearchText(text);
        QStringList names;
        for (const InstalledApp &a : model().filteredApps())
            names.append(a.name);
        QCOMPARE(names, expected);
    }

    void scanTicksEveryItem()
    {
        // With nothing selected the scan does nothing, not even clear the status line.
        model().handleDroppedApp(QUrl::fromLocalFile(QStringLiteral("/tmp/readme.txt")));
        const QString before = status(model());
        model().scanSelectedApp();
        QCOMPARE(fakes().scans.count(), 0);
        QCOMPARE(status(model()), before);

        model().loadApps();
        const InstalledApp alpha = app(QStringLiteral("Alpha"));
        fakes().discovery.finish(0, {alpha});
        model().scanSelectedApp();
        QVERIFY(model().isScanning());
        QCOMPARE(status(model()), QStringLiteral("Scanning for leftover files…"));
        const ScanResult result = resultOf(alpha, 2);
        fakes().scans.finish(0, result);
        QVERIFY(!model().isScanning());
        QCOMPARE(model().selectedItems(), result.items);
        QCOMPARE(model().selectedTotalSize(), 2100);
        QCOMPARE(status(model()), QStringLiteral("Found 3 related items (2 KB)."));

        model().scanSelectedApp();
        fakes().scans.finish(1, ScanResult{});
        QVERIFY(model().scanResult());
        QVERIFY(model().selectedItemIDs().isEmpty());
        QCOMPARE(status(model()), QStringLiteral("Found 0 related items (Zero KB)."));
    }

    void overlappingScansApplyInTheOrderTheyEnd()
    {
        model().loadApps();
        const InstalledApp alpha = app(QStringLiteral("Alpha"));
        const InstalledApp beta = app(QStringLiteral("Beta"));
        fakes().discovery.finish(0, {alpha, beta});
        model().scanSelectedApp();
        model().selectApp(beta);
        model().scanSelectedApp();
        QCOMPARE(fakes().scannedApps, (QList<InstalledApp>{alpha, beta}));

        fakes().scans.finish(1, resultOf(beta, 1));
        QVERIFY(!model().isScanning());
        QCOMPARE(model().scanResult(), resultOf(beta, 1));
        // The earlier scan ends last and wins, whatever is selected now.
        fakes().scans.finish(0, resultOf(alpha, 3));
        QCOMPARE(model().scanResult(), resultOf(alpha, 3));
        QCOMPARE(model().selectedApp(), beta);
        QCOMPARE(status(model()), QStringLiteral("Found 4 related items (3 KB)."));
    }

    void abandonedTasksLowerTheirFlags()
    {
        model().loadApps();
        fakes().discovery.promises.first()->finish(); // ends with no result
        QVERIFY(!model().isLoadingApps());
        model().selectApp(app(QStringLiteral("Alpha")));
        model().scanSelectedApp();
        fakes().scans.promises.first().reset(); // a promise dropped unfinished cancels its future
        QVERIFY(!model().isScanning());
        QCOMPARE(status(model()), QStringLiteral("Found 0 related items (Zero KB)."));

        model().switchSidebarMode(SidebarMode::Removed);
        fakes().removedScans.promises.first()->setException(std::make_exception_ptr(std::runtime_error("disk gone")));
        fakes().removedScans.promises.first()->finish();
        QVERIFY(!model().isScanningOrphans());
        QCOMPARE(status(model()), QStringLiteral("No confident leftovers from removed apps were found."));
    }

    void removedScanStatus_data()
    {
        QTest::addColumn<QList<OrphanConfidence>>("grades");
        QTest::addColumn<bool>("showUncertain");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<int>("selectedIndex");
        using C = OrphanConfidence;
        QTest::newRow("two of five hidden")
            << QList<C>{C::high, C::medium, C::medium, C::uncertain, C::uncertain} << false
            << QStringLiteral("Showing 3 removed app matches. 2 uncertain matches hidden.") << 0;
        QTest::newRow("all shown") << QList<C>{C::high, C::medium, C::medium, C::uncertain, C::uncertain} << true
                                   << QStringLiteral("Showing 5 removed app matches.") << 0;
        QTest::newRow("one hidden") << QList<C>{C::high, C::uncertain} << false
                                    << QStringLiteral("Showing 1 removed app match. 1 uncertain match hidden.") << 0;
        QTest::newRow("all uncertain") << QList<C>{C::uncertain, C::uncertain, C::uncertain} << false
                                       << QStringLiteral("Showing 0 removed app matches. 3 uncertain matches hidden.")
                                       << -1;
        QTest::newRow("none") << QList<C>{} << false
                              << QStringLiteral("No confident leftovers from removed apps were found.") << -1;
    }

    void removedScanStatus()
    {
        QFETCH(QList<OrphanConfidence>, grades);
        QFETCH(bool, showUncertain);
        QFETCH(QString, expected);
        QFETCH(int, selectedIndex);
        QList<OrphanedAppGroup> groups;
        for (int i = 0; i < grades.size(); ++i)
            groups.append(group(QStringLiteral("G%1").arg(i), grades.at(i), i + 1));
        model().setShowUncertainMatches(showUncertain);
        model().switchSidebarMode(SidebarMode::Removed);
        QCOMPARE(status(model()), QStringLiteral("Scanning Library for leftovers from removed apps…"));
        fakes().removedScans.finish(0, groups);
        QCOMPARE(status(model()), expected);
        QCOMPARE(model().orphanedGroups(), groups);
        if (selectedIndex < 0) {
            QVERIFY(!model().selectedOrphan());
            QVERIFY(model().selectedItemIDs().isEmpty());
        } else {
            QCOMPARE(model().selectedOrphan(), groups.at(selectedIndex));
            QCOMPARE(model().selectedItems(), groups.at(selectedIndex).items);
        }
    }

    void modeSwitchReusesGroups()
    {
        const QList<OrphanedAppGroup> groups{group(QStringLiteral("Old"), OrphanConfidence::uncertain),
                                             group(QStringLiteral("Gone"), OrphanConfidence::high, 3)};
        loadAndScan({app(QStringLiteral("Alpha"))}, resultOf(app(QStringLiteral("Alpha")), 1));
        model().setSearchText(QStringLiteral("al"));
        enterRemovedMode(groups);
        QVERIFY(!model().selectedApp());
        QVERIFY(model().searchText().isEmpty());
        QCOMPARE(model().visibleOrphans(), QList<OrphanedAppGroup>{groups.at(1)});

        model().switchSidebarMode(SidebarMode::Installed);
        QVERIFY(!model().selectedApp());
        QVERIFY(!model().activeScanResult());
        QVERIFY(!model().selectedOrphan());

        model().switchSidebarMode(SidebarMode::Removed);
        QCOMPARE(fakes().removedScans.count(), 1);
        QCOMPARE(model().selectedOrphan(), groups.at(1));
        QCOMPARE(model().selectedItemIDs(), idsOf(groups.at(1).items));
        QVERIFY(!model().statusMessage());

        // Showing uncertain groups brings them back in place; hiding them moves a hidden selection on.
        model().setShowUncertainMatches(true);
        QCOMPARE(model().filteredOrphans(), groups);
        model().selectOrphan(groups.at(0));
        QCOMPARE(status(model()), QStringLiteral("Found 2 leftover items (2 KB)."));
        model().deselectAll();
        model().refreshOrphanSelection();
        QCOMPARE(model().selectedOrphan(), groups.at(0));
        QCOMPARE(model().selectedItemIDs(), idsOf(groups.at(0).items));
        model().setShowUncertainMatches(false);
        model().refreshOrphanSelection();
        QCOMPARE(model().selectedOrphan(), groups.at(1));
        QCOMPARE(model().selectedItemIDs(), idsOf(groups.at(1).items));
        QCOMPARE(status(model()), QStringLiteral("Found 2 leftover items (2 KB)."));
    }

    void tickingItemsAndCategories()
    {
        const InstalledApp alpha = app(QStringLiteral("Alpha"));
        ScanResult result = resultOf(alpha, 2);
        result.items.insert(1, item(QStringLiteral("/Users/ann/Library/Preferences/alpha.plist"), LeftoverCategory::preferences));
        // Ticks without an active result stay as they are.
        model().toggleSelection(result.items.at(0));
        model().selectAll();
        QCOMPARE(model().selectedItemIDs(), (QSet<QString>{result.items.at(0).id}));
        model().setSelection(LeftoverCategory::caches, true);
        QCOMPARE(model().selectedItemIDs().size(), 1);
        QVERIFY(model().selectedItems().isEmpty());

        loadAndScan({alpha}, result);
        QSignalSpy ids(&model(), &AppViewModel::selectedItemIDsChanged);
        QSignalSpy dataChanged(model().activeItemsModel(), &QAbstractItemModel::dataChanged);
        model().setSelection(LeftoverCategory::caches, false);
        QCOMPARE(model().selectedItems(), (QList<LeftoverItem>{result.items.at(0), result.items.at(1)}));
        QCOMPARE(dataChanged.count(), 2);
        // Sections follow the category order, not the result's, and count their ticks.
        const auto *sections = model().activeCategoriesModel();
        QStringList sectionText;
        for (int row = 0; row < sections->rowCount(); ++row) {
            const QModelIndex index = sections->index(row);
            sectionText.append(QStringLiteral("%1 %2/%3")
                                   .arg(index.data(int(CategorySectionListModel::Role::category)).toString())
                                   .arg(index.data(int(CategorySectionListModel::Role::selectedCount)).toInt())
                                   .arg(index.data(int(CategorySectionListModel::Role::itemCount)).toInt()));
        }
        QCOMPARE(sectionText, (QStringList{"Application 1/1", "Caches 0/2", "Preferences 1/1"}));
        QCOMPARE(model().activeItemsModel()->index(3).data(int(LeftoverItemListModel::Role::id)).toString(),
                 result.items.at(1).id);
        model().toggleSelection(result.items.at(0));
        model().setSelection(LeftoverCategory::caches, true);
        QCOMPARE(model().selectedItems(), result.items.mid(1));
        QCOMPARE(model().selectedTotalSize(), 3000);
        QCOMPARE(sections->index(0).data(int(CategorySectionListModel::Role::selectedCount)).toInt(), 0);
        model().toggleItemSelection(QStringLiteral("/elsewhere")); // an id of no item counts for nothing
        QCOMPARE(model().selectedItems(), result.items.mid(1));
        model().deselectAll();
        QVERIFY(model().selectedItems().isEmpty());
        model().selectAll();
        QCOMPARE(model().selectedItems(), result.items);
        QCOMPARE(ids.count(), 6);
    }

    // The window's rows and section boxes call in by id and by title; a stale one changes nothing. A
    // click on an app row is in the Qt Quick tests.
    void entryPointsByIdAndTitle()
    {
        const InstalledApp alpha = app(QStringLiteral("Alpha"));
        loadAndScan({alpha, app(QStringLiteral("Beta"))}, resultOf(alpha, 2));
        model().selectAppById(QStringLiteral("/Applications/Gone.app"));
        QCOMPARE(model().selectedApp(), alpha);
        model().setCategorySelection(QStringLiteral("caches"), false); // titles are case-sensitive
        QCOMPARE(model().selectedItemIDs().size(), 3);
        model().setCategorySelection(QStringLiteral("Caches"), false);
        QCOMPARE(model().selectedItems(), resultOf(alpha, 2).items.mid(0, 1));

        const QList<OrphanedAppGroup> groups{group(QStringLiteral("One"), OrphanConfidence::high),
                                             group(QStringLiteral("Two"), OrphanConfidence::high)};
        enterRemovedMode(groups);
        model().selectOrphanById(QStringLiteral("id.Gone"));
        QCOMPARE(model().selectedOrphan(), groups.at(0));
        model().selectOrphanById(groups.at(1).id);
        QCOMPARE(model().selectedOrphan(), groups.at(1));
    }

    void deletionOutcome_data()
    {
        QTest::addColumn<int>("moved");
        QTest::addColumn<int>("failed");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<int>("sounds");
        QTest::newRow("all moved") << 3 << 0 << QStringLiteral("Moved 3 items to Trash.") << 1;
        QTest::newRow("one failed") << 2 << 1 << QStringLiteral("Moved 2 items to Trash. 1 could not be removed.") << 1;
        QTest::newRow("none moved") << 0 << 2 << QStringLiteral("Moved 0 items to Trash. 2 could not be removed.") << 0;
    }

    void deletionOutcome()
    {
        QFETCH(int, moved);
        QFETCH(int, failed);
        QFETCH(QString, expected);
        QFETCH(int, sounds);
        const InstalledApp alpha = app(QStringLiteral("Alpha"));
        const ScanResult result = resultOf(alpha, moved + failed);
        loadAndScan({alpha}, result);
        model().toggleSelection(result.items.at(0)); // the bundle stays
        const QList<LeftoverItem> sent = result.items.mid(1);

        model().deleteSelectedItems();
        QVERIFY(model().isDeleting());
        QCOMPARE(status(model()), QStringLiteral("Moving selected items to Trash…"));
        QCOMPARE(fakes().trashedItems, QList<QList<LeftoverItem>>{sent});

        DeletionReport outcome{sent.mid(0, moved), {}};
        for (const LeftoverItem &i : sent.mid(moved))
            outcome.failed.append({i, QStringLiteral("Permission denied")});
        fakes().trashRuns.finish(0, outcome);
        QVERIFY(!model().isDeleting());
        QCOMPARE(status(model()), expected);
        QCOMPARE(fakes().sounds, sounds);
        QCOMPARE(model().lastDeletionReport(), outcome);
        QCOMPARE(model().lastDeletionReportValue().failedCount, failed);
        QCOMPARE(fakes().scans.count(), 1); // the rescan waits for the reload

        // The app is still installed, so it is scanned again and its remaining items ticked.
        fakes().discovery.finish(1, {alpha});
        QCOMPARE(fakes().scans.count(), 2);
        QCOMPARE(status(model()), QStringLiteral("Scanning for leftover files…"));
        QVERIFY(!model().lastDeletionReport());
        fakes().scans.finish(1, resultOf(alpha, failed));
        QCOMPARE(model().selectedItems(), resultOf(alpha, failed).items);
    }

    void deletingTheBundleSelectsTheFirstApp()
    {
        const InstalledApp alpha = app(QStringLiteral("Alpha"));
        const InstalledApp beta = app(QStringLiteral("Beta"));
        loadAndScan({alpha, beta}, resultOf(alpha, 1));
        model().deleteSelectedItems();
        // Even when moving the bundle failed, the app is treated as gone.
        const ScanResult result = resultOf(alpha, 1);
        fakes().trashRuns.finish(0, DeletionReport{{result.items.at(1)}, {{result.items.at(0), QStringLiteral("Busy")}}});
        fakes().discovery.finish(1, {beta, alpha});
        QCOMPARE(fakes().scans.count(), 1);
        QCOMPARE(model().selectedApp(), beta);
        QVERIFY(!model().scanResult());
        QVERIFY(model().selectedItemIDs().isEmpty());
        QVERIFY(model().lastDeletionReport());
        QCOMPARE(status(model()), QStringLiteral("Moved 1 items to Trash. 1 could not be removed."));

        // Nothing ticked: no task starts and nothing changes.
        QSignalSpy anyStatus(&model(), &AppViewModel::statusMessageChanged);
        model().deleteSelectedItems();
        QCOMPARE(fakes().trashRuns.count(), 1);
        QCOMPARE(anyStatus.count(), 0);
    }

    void deletionInRemovedMode_data()
    {
        QTest::addColumn<bool>("selectedGroupRemains");
        QTest::addColumn<bool>("othersRemain");
        QTest::addColumn<QString>("expected");
        QTest::newRow("same group, fewer items") << true << true << QStringLiteral("Found 1 remaining items (1 KB).");
        QTest::newRow("group gone, others left") << false << true << QStringLiteral("Found 4 remaining items (4 KB).");
        QTest::newRow("nothing left") << false << false << QStringLiteral("All leftovers for that app were removed.");
    }

    void deletionInRemovedMode()
    {
        QFETCH(bool, selectedGroupRemains);
        QFETCH(bool, othersRemain);
        QFETCH(QString, expected);
        const OrphanedAppGroup gone = group(QStringLiteral("Gone"), OrphanConfidence::high, 3);
        const OrphanedAppGroup other = group(QStringLiteral("Other"), OrphanConfidence::medium, 4);
        enterRemovedMode({gone, other});
        QCOMPARE(model().selectedOrphan(), gone);
        model().deleteSelectedItems();
        QCOMPARE(fakes().trashedItems.first(), gone.items);
        fakes().trashRuns.finish(0, DeletionReport{gone.items.mid(1), {{gone.items.at(0), QStringLiteral("Denied")}}});
        QCOMPARE(fakes().removedScans.count(), 2);
        QVERIFY(!model().isScanningOrphans());

        QList<OrphanedAppGroup> after;
        OrphanedAppGroup remaining = gone;
        remaining.items = gone.items.mid(0, 1);
        if (selectedGroupRemains)
            after.append(remaining);
        if (othersRemain)
            after.append(other);
        fakes().removedScans.finish(1, after);
        QCOMPARE(status(model()), expected);
        QVERIFY(model().lastDeletionReport());
        if (!after.isEmpty()) {
            QCOMPARE(model().selectedOrphan(), after.first());
            QCOMPARE(model().selectedItems(), after.first().items);
        }
    }

    // Dropped while the removed mode shows a group and a search is typed. A document is refused by
    // name in tst_AppDropZoneView.
    void droppedApps_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("leftovers"); // what the scan of an accepted app finds; -1: nothing at all
        QTest::addColumn<QString>("expected");
        const QString refused = QStringLiteral("Could not read the dropped app.");
        QTest::newRow("with leftovers") << "DropMe.app" << "app" << 3 << QStringLiteral("Ready to remove 4 items (4 KB) for Drop Me.");
        QTest::newRow("without") << "DropMe.app" << "app" << -1 << QStringLiteral("No related files found for Drop Me.");
        QTest::newRow("plain file named .app") << "Fake.app" << "file" << 0 << refused;
        QTest::newRow("missing bundle") << "Gone.app" << "missing" << 0 << refused;
        QTest::newRow("upper-case extension") << "Shout.APP" << "bundle" << 0 << refused;
    }

    void droppedApps()
    {
        QFETCH(QString, name);
        QFETCH(QString, kind);
        QFETCH(int, leftovers);
        QFETCH(QString, expected);
        QTemporaryDir folder;
        const QString path = folder.filePath(name);
        if (kind == QLatin1String("app"))
            TestSupport::writeApp(path, QStringLiteral("Drop Me"), QStringLiteral("com.example.DropMe"), 1000);
        else if (kind == QLatin1String("file"))
            TestSupport::writeFile(path, "not a bundle");
        else if (kind == QLatin1String("bundle"))
            TestSupport::writeFile(path + QStringLiteral("/Contents/Info.plist"));

        enterRemovedMode({group(QStringLiteral("Gone"), OrphanConfidence::high)});
        model().setSearchText(QStringLiteral("Go"));
        const auto ticks = model().selectedItemIDs();
        QSignalSpy statusSpy(&model(), &AppViewModel::statusMessageChanged);
        QSignalSpy processing(&model(), &AppViewModel::isDropProcessingChanged);
        QSignalSpy confirmation(&model(), &AppViewModel::showDeleteConfirmationChanged);
        model().handleDroppedApp(QUrl::fromLocalFile(path));
        if (kind != QLatin1String("app")) {
            // Refused: only the status line changes.
            QTRY_COMPARE(statusSpy.count(), 1);
            QCOMPARE(status(model()), expected);
            QCOMPARE(model().sidebarMode(), SidebarMode::Removed);
            QCOMPARE(model().selectedOrphan()->displayName, QStringLiteral("Gone"));
            QCOMPARE(model().selectedItemIDs(), ticks);
            QCOMPARE(processing.count(), 0);
            QCOMPARE(fakes().scans.count(), 0);
            return;
        }
        QTRY_COMPARE(fakes().scans.count(), 1);
        QVERIFY(model().isDropProcessing());
        QVERIFY(!model().isScanning());
        QCOMPARE(model().sidebarMode(), SidebarMode::Installed);
        QVERIFY(!model().selectedOrphan());
        QCOMPARE(model().searchText(), QStringLiteral("Go")); // not a mode switch: search and groups stay
        QCOMPARE(model().orphanedGroups().size(), 1);
        QCOMPARE(model().selectedApp()->name, QStringLiteral("Drop Me"));
        QCOMPARE(model().selectedApp()->bundleIdentifier, QStringLiteral("com.example.DropMe"));
        QCOMPARE(status(model()), QStringLiteral("Scanning Drop Me for leftover files…"));

        const ScanResult result = leftovers < 0 ? ScanResult{} : resultOf(*model().selectedApp(), leftovers);
        fakes().scans.finish(0, result);
        QVERIFY(!model().isDropProcessing());
        QCOMPARE(processing.count(), 2);
        QCOMPARE(model().selectedItems(), result.items);
        QCOMPARE(status(model()), expected);
        QCOMPARE(model().showDeleteConfirmation(), leftovers >= 0);
        QCOMPARE(confirmation.count(), leftovers >= 0 ? 1 : 0);
    }

    // Downloading, dismissing and the found-on-request message are driven by the Qt Quick tests.
    void updates()
    {
        const AppUpdateInfo offer{QStringLiteral("2.0.1"), QUrl(QStringLiteral("https://example.com/k.dmg")), std::nullopt};
        // Found at start-up: the banner shows, the status line is untouched.
        model().checkForUpdates(false);
        QVERIFY(model().isCheckingForUpdate());
        model().checkForUpdates(true); // refused while one runs, without a message
        QCOMPARE(fakes().updateChecks.count(), 1);
        fakes().updateChecks.finish(0, offer);
        QCOMPARE(model().availableUpdate(), offer);
        QVERIFY(!model().statusMessage());

        // An automatic check that finds nothing keeps the offer; once dismissed, none runs again.
        model().checkForUpdates(false);
        fakes().updateChecks.finish(1, std::nullopt);
        QCOMPARE(model().availableUpdate(), offer);
        model().dismissAvailableUpdate();
        model().openAvailableUpdateDownload();
        QVERIFY(fakes().openedUrls.isEmpty());
        model().checkForUpdates(false);
        QCOMPARE(fakes().updateChecks.count(), 2);

        // Asked for, "nothing newer" clears an earlier offer and says so.
        model().checkForUpdates(true);
        fakes().updateChecks.finish(2, offer);
        model().checkForUpdates(true);
        fakes().updateChecks.finish(3, std::nullopt);
        QVERIFY(!model().availableUpdate());
        QCOMPARE(status(model()), QStringLiteral("You're on the latest version (v1.2.0)."));
    }

    void resultsApplyInTheirStepOrder()
    {
        const InstalledApp alpha = app(QStringLiteral("Alpha"));
        FieldLog log(&model());
        model().loadApps();
        QCOMPARE(log.take(), (QStringList{"isLoadingApps", "statusMessage"}));
        fakes().discovery.finish(0, {alpha});
        QCOMPARE(log.take(), (QStringList{"apps", "selectedApp", "isLoadingApps"}));

        model().scanSelectedApp();
        QCOMPARE(log.take(), (QStringList{"isScanning", "statusMessage", "scanResult", "selectedItemIDs", "lastDeletionReport"}));
        fakes().scans.finish(0, resultOf(alpha, 1));
        QCOMPARE(log.take(), (QStringList{"scanResult", "selectedItemIDs", "isScanning", "statusMessage"}));

        model().deleteSelectedItems();
        QCOMPARE(log.take(), (QStringList{"isDeleting", "statusMessage"}));
        fakes().trashRuns.finish(0, DeletionReport{resultOf(alpha, 1).items, {}});
        QCOMPARE(log.take(), (QStringList{"lastDeletionReport", "isDeleting", "statusMessage"}));
        fakes().discovery.finish(1, {});
        QCOMPARE(log.take(), (QStringList{"apps", "scanResult", "selectedItemIDs", "selectedApp"}));

        model().switchSidebarMode(SidebarMode::Removed);
        QCOMPARE(log.take(), (QStringList{"sidebarMode", "searchText", "selectedItemIDs", "lastDeletionReport",
                                          "statusMessage", "scanResult", "selectedApp", "isScanningOrphans",
                                          "statusMessage", "orphanedGroups", "selectedOrphan", "selectedItemIDs",
                                          "lastDeletionReport"}));
        fakes().removedScans.finish(0, {group(QStringLiteral("Gone"), OrphanConfidence::high)});
        QCOMPARE(log.take(), (QStringList{"orphanedGroups", "selectedOrphan", "selectedItemIDs", "isScanningOrphans",
                                          "statusMessage"}));

        model().checkForUpdates(true);
        log.take();
        fakes().updateChecks.finish(0, AppUpdateInfo{QStringLiteral("9"), QUrl(QStringLiteral("https://example.com")), {}});
        QCOMPARE(log.take(), (QStringList{"isCheckingForUpdate", "availableUpdate", "statusMessage"}));
    }

    void readableFromQml()
    {
        // The window binds to these; the Qt Quick tests reach the other fields, but not these.
        qmlRegisterTypesAndRevisions<Probe, AppViewModel, InstalledAppListModel, OrphanGroupListModel, LeftoverItemListModel,
                                     CategorySectionListModel>("Kestrune.Test", 1);
        qmlRegisterNamespaceAndRevisions(&SidebarModes::staticMetaObject, "Kestrune.Test", 1);
        loadAndScan({app(QStringLiteral("Alpha"))}, resultOf(app(QStringLiteral("Alpha")), 2));
        QQmlEngine engine;
        engine.rootContext()->setContextProperty(QStringLiteral("viewModel"), &model());
        QQmlComponent component(&engine);
        component.setData(R"(
            import Kestrune.Test
            Probe {
                property int items: viewModel.activeScanResult.itemCount
                property string removedTitle: viewModel.sidebarModeTitle(SidebarMode.Removed)
            })",
                          QUrl(QStringLiteral("qrc:/bindings.qml")));
        std::unique_ptr<QObject> root(component.create());
        QVERIFY2(root, qPrintable(component.errorString()));
        QCOMPARE(root->property("items").toInt(), 3);
        QCOMPARE(root->property("removedTitle").toString(), QStringLiteral("Removed Apps"));
        const QList<QByteArray> roles = model().activeItemsModel()->roleNames().values();
        QVERIFY(roles.contains("formattedSize") && roles.contains("isSelected"));
    }
};

QTEST_GUILESS_MAIN(AppViewModelTest)
#include "tst_appviewmodel.moc"
