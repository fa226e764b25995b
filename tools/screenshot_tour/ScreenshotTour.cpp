// SPDX-License-Identifier: MIT
#include "ScreenshotTour.h"

#include "models/LeftoverCategory.h"

#include <QDir>
#include <QGuiApplication>
#include <QPalette>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSet>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace {

constexpr int stepTimeoutMs = 20'000;
// Bindings, layouts and the icons read off the main thread land after a change, and nothing announces
// the last of them: each step gives the window this long first.
constexpr int settleMs = 300;
// A list that has not reached a row after this many pages does not hold it.
constexpr int maxPages = 200;

// How many kinds of leftovers the items show: the more, the more of the detail view a picture holds.
qsizetype kindsOf(const QList<LeftoverItem> &items)
{
    QSet<LeftoverCategory> kinds;
    for (const LeftoverItem &item : items)
        kinds.insert(item.category);
    return kinds.size();
}

// The desktop's own scheme names the pictures: the tour never sets a palette, so a dark picture shows
// what a dark desktop gives the window.
bool desktopIsDark()
{
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

// The shown list of that name, searched through the items on screen: views made by a Loader are not
// QObject children of the window's items.
QQuickItem *shownList(QQuickItem &item, const QString &name)
{
    if (!item.isVisible())
        return nullptr;
    if (item.objectName() == name)
        return &item;
    const QList<QQuickItem *> children = item.childItems();
    for (QQuickItem *child : children) {
        if (QQuickItem *found = shownList(*child, name))
            return found;
    }
    return nullptr;
}

// The row of the list that shows the item, once the list has built it.
QQuickItem *shownRow(QQuickItem &list, const QString &itemId)
{
    const auto *content = list.property("contentItem").value<QQuickItem *>();
    if (!content)
        return nullptr;
    const QList<QQuickItem *> rows = content->childItems();
    for (QQuickItem *row : rows) {
        if (row->isVisible() && row->property("id").toString() == itemId)
            return row;
    }
    return nullptr;
}

} // namespace

QStringList ScreenshotTour::pictureNames()
{
    return {QStringLiteral("welcome"),      QStringLiteral("installed"),        QStringLiteral("detail"),
            QStringLiteral("detail-system"), QStringLiteral("trash-dialog"),    QStringLiteral("removed-scanning"),
            QStringLiteral("removed"),       QStringLiteral("removed-detail")};
}

ScreenshotTour::ScreenshotTour(QString folder, QStringList only, QObject *parent)
    : QObject(parent), m_folder(std::move(folder)), m_only(std::move(only))
{
    m_appsRelease.start();
    m_removedScanRelease.start();
    m_deadline.setSingleShot(true);
    m_deadline.setInterval(stepTimeoutMs);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        fail(QStringLiteral("timed out after %1 s waiting for %2")
                 .arg(stepTimeoutMs / 1000)
                 .arg(m_steps.at(m_next).waitingFor));
    });
}

ScreenshotTour::~ScreenshotTour() = default;

AppViewModelServices ScreenshotTour::services()
{
    const AppViewModelServices real = AppViewModelServices::real();
    AppViewModelServices services;
    const QFuture<void> appsRelease = m_appsRelease.future();
    services.discoverInstalledApps = [this, appsRelease, real] {
        return QFuture<void>(appsRelease).then(this, [real] { return real.discoverInstalledApps(); }).unwrap();
    };
    const QFuture<void> removedScanRelease = m_removedScanRelease.future();
    services.scanRemovedApps = [this, removedScanRelease, real] {
        return QFuture<void>(removedScanRelease).then(this, [real] { return real.scanRemovedApps(); }).unwrap();
    };
    services.checkForUpdate = [] {
        AppUpdateInfo update{QStringLiteral("2.4.0"), QUrl(QStringLiteral("https://example.org/kestrune/2.4.0")),
                             QStringLiteral("Faster removed-app scans and clearer Trash reports.")};
        return QtFuture::makeReadyFuture(std::optional<AppUpdateInfo>(update));
    };
    services.moveToTrash = [](const QList<LeftoverItem> &items) {
        DeletionReport report;
        for (const LeftoverItem &item : items)
            report.failed.append({item, QStringLiteral("The screenshot tour moves nothing to the Trash.")});
        return QtFuture::makeReadyFuture(report);
    };
    services.playDeletionComplete = [] {};
    services.openUrl = [](const QUrl &) {};
    services.openFullDiskAccessSettings = [] {};
    return services;
}

void ScreenshotTour::start(AppViewModel &viewModel, QQuickWindow &window)
{
    m_viewModel = &viewModel;
    m_window = &window;
    if (!QDir().mkpath(m_folder))
        return fail(QStringLiteral("cannot create the folder %1").arg(m_folder));
    buildSteps();
    runNext();
}

ScreenshotTour::Watch ScreenshotTour::on(void (AppViewModel::*signal)())
{
    AppViewModel *viewModel = m_viewModel;
    return [viewModel, signal](QObject *context, const std::function<void()> &check) {
        return connect(viewModel, signal, context, check);
    };
}

void ScreenshotTour::then(std::function<void()> act, QString waitingFor, QList<Watch> wakeOn, std::function<bool()> done)
{
    m_steps.append({std::move(act), std::move(waitingFor), std::move(wakeOn), std::move(done)});
}

void ScreenshotTour::shoot(const QString &picture)
{
    then([this, picture] { save(picture); });
}

void ScreenshotTour::buildSteps()
{
    AppViewModel *vm = m_viewModel;
    // The window asked for the apps and for an update as it opened; the apps wait for the tour.
    then({}, QStringLiteral("the update offer"), {on(&AppViewModel::availableUpdateChanged)},
         [vm] { return vm->isLoadingApps() && vm->availableUpdate().has_value(); });
    shoot(QStringLiteral("welcome"));
    then([this] { m_appsRelease.finish(); }, QStringLiteral("the installed apps"), {on(&AppViewModel::isLoadingAppsChanged)},
         [vm] { return !vm->isLoadingApps() && !vm->apps().isEmpty(); });
    shoot(QStringLiteral("installed"));

    then([this] { chooseApp(); }, QStringLiteral("a scan of every listed app"),
         {[this](QObject *context, const std::function<void()> &check) {
             return connect(&m_appChoice, &QFutureWatcherBase::finished, context, check);
         }},
         [this] { return m_appChoice.isFinished(); });
    then(
        [this, vm] {
            vm->selectAppById(m_appChoice.result());
            vm->scanSelectedApp();
        },
        QStringLiteral("the leftover scan"), {on(&AppViewModel::isScanningChanged)},
        [vm] { return !vm->isScanning() && vm->scanResult().has_value(); });
    shoot(QStringLiteral("detail"));

    // The system locations sit in the middle of a long result.
    then([this, vm] {
        const QList<LeftoverItem> &rows = vm->activeItemsModel()->records();
        for (const LeftoverItem &row : rows) {
            if (LeftoverCategories::systemLevel(row.category))
                return centreItem("resultsList", row.id);
        }
        scrollToEnd("resultsList");
    });
    shoot(QStringLiteral("detail-system"));

    then([vm] { vm->confirmDelete(); }, QStringLiteral("the Trash dialog"), {on(&AppViewModel::showDeleteConfirmationChanged)},
         [vm] { return vm->showDeleteConfirmation(); });
    shoot(QStringLiteral("trash-dialog"));
    then([vm] { vm->setShowDeleteConfirmation(false); });

    then(
        [vm] {
            vm->setShowUncertainMatches(true);
            vm->switchSidebarMode(SidebarMode::Removed);
        },
        QStringLiteral("the removed-app scan to start"), {on(&AppViewModel::isScanningOrphansChanged)},
        [vm] { return vm->isScanningOrphans(); });
    shoot(QStringLiteral("removed-scanning"));
    then([this] { m_removedScanRelease.finish(); }, QStringLiteral("the removed-app scan"),
         {on(&AppViewModel::isScanningOrphansChanged)},
         [vm] { return !vm->isScanningOrphans() && !vm->orphanedGroups().isEmpty(); });
    // The grades run from high to uncertain down the list: its end shows all three.
    then([this] { scrollToEnd("orphanList"); });
    shoot(QStringLiteral("removed"));

    then([this, vm] { vm->selectOrphanById(groupToShow()); }, QStringLiteral("the removed app's selection"),
         {on(&AppViewModel::selectedOrphanChanged)}, [this, vm] {
             return vm->selectedOrphan().has_value() && vm->selectedOrphan()->id == groupToShow();
         });
    shoot(QStringLiteral("removed-detail"));
}

void ScreenshotTour::runNext()
{
    QTimer::singleShot(settleMs, this, [this] {
        if (m_stopped)
            return;
        if (m_next == m_steps.size()) {
            m_stopped = true;
            return Q_EMIT finished(0);
        }
        const Step &step = m_steps.at(m_next);
        if (step.act)
            step.act();
        if (m_stopped)
            return;
        if (!step.done) {
            ++m_next;
            return runNext();
        }
        for (const Watch &watch : step.wakeOn)
            m_waiting.append(watch(this, [this] { check(); }));
        m_deadline.start();
        check();
    });
}

void ScreenshotTour::check()
{
    if (m_stopped || !m_steps.at(m_next).done())
        return;
    for (const QMetaObject::Connection &connection : std::as_const(m_waiting))
        disconnect(connection);
    m_waiting.clear();
    m_deadline.stop();
    ++m_next;
    runNext();
}

void ScreenshotTour::fail(const QString &message)
{
    for (const QMetaObject::Connection &connection : std::as_const(m_waiting))
        disconnect(connection);
    m_waiting.clear();
    m_deadline.stop();
    m_stopped = true;
    std::fprintf(stderr, "kestrune-screenshots: %s\n", qPrintable(message));
    Q_EMIT finished(1);
}

void ScreenshotTour::save(const QString &picture)
{
    if (!m_only.isEmpty() && !m_only.contains(picture))
        return;
    const QString path =
        QDir(m_folder).filePath(picture + (desktopIsDark() ? QStringLiteral("-dark.png") : QStringLiteral("-light.png")));
    if (!m_window->grabWindow().save(path))
        return fail(QStringLiteral("cannot write %1").arg(path));
    std::printf("%s\n", qPrintable(path));
    std::fflush(stdout);
}

// The listed app whose scan shows the most kinds of leftovers, the first of equals: its detail view
// shows the most of the window. The scans run beside the window's own state, which never sees them.
void ScreenshotTour::chooseApp()
{
    const AppViewModelServices real = AppViewModelServices::real();
    const QList<InstalledApp> apps = m_viewModel->apps();
    QList<QFuture<ScanResult>> scans;
    for (const InstalledApp &app : apps)
        scans.append(real.scanApp(app));
    m_appChoice.setFuture(QtFuture::whenAll(scans.begin(), scans.end()).then(this, [apps](const QList<QFuture<ScanResult>> &done) {
        qsizetype best = 0;
        qsizetype bestKinds = -1;
        for (qsizetype i = 0; i < done.size(); ++i) {
            const qsizetype kinds = kindsOf(done.at(i).result().items);
            if (kinds > bestKinds) {
                best = i;
                bestKinds = kinds;
            }
        }
        return apps.at(best).id;
    }));
}

// A group spread over the most categories shows the sections best; the first of equals wins.
QString ScreenshotTour::groupToShow() const
{
    const QList<OrphanedAppGroup> groups = m_viewModel->visibleOrphans();
    QString best;
    qsizetype bestKinds = -1;
    for (const OrphanedAppGroup &group : groups) {
        const qsizetype kinds = kindsOf(group.items);
        if (kinds > bestKinds) {
            best = group.id;
            bestKinds = kinds;
        }
    }
    return best;
}

// Moves the list's content up by `pixels` (down when negative), within its bounds, through Flickable's
// public position: the views offer no scrolling of their own and the wheel cannot be aimed at a row.
void ScreenshotTour::scroll(QQuickItem &list, qreal pixels)
{
    const qreal top = list.property("originY").toReal();
    const qreal bottom = std::max(top, top + list.property("contentHeight").toReal() - list.height());
    list.setProperty("contentY", std::clamp(list.property("contentY").toReal() + pixels, top, bottom));
    // The list builds the rows it now shows when it is next polished; the search below needs them.
    list.ensurePolished();
}

void ScreenshotTour::scrollToEnd(const char *listName)
{
    QQuickItem *list = shownList(*m_window->contentItem(), QLatin1String(listName));
    if (!list)
        return fail(QStringLiteral("the window shows no %1").arg(QLatin1String(listName)));
    // A list guesses its height from the rows it has built, so the end can move as it comes into view.
    for (int page = 0; page < maxPages && !list->property("atYEnd").toBool(); ++page)
        scroll(*list, list->property("contentHeight").toReal());
}

void ScreenshotTour::centreItem(const char *listName, const QString &itemId)
{
    QQuickItem *list = shownList(*m_window->contentItem(), QLatin1String(listName));
    if (!list)
        return fail(QStringLiteral("the window shows no %1").arg(QLatin1String(listName)));
    QQuickItem *row = shownRow(*list, itemId);
    for (int page = 0; page < maxPages && !row && !list->property("atYEnd").toBool(); ++page) {
        scroll(*list, list->height() * 0.8);
        row = shownRow(*list, itemId);
    }
    if (!row)
        return fail(QStringLiteral("%1 never shows the item %2").arg(QLatin1String(listName), itemId));
    scroll(*list, row->mapToItem(list, QPointF(0, row->height() / 2)).y() - list->height() / 2);
}
