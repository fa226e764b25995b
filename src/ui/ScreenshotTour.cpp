// SPDX-License-Identifier: MIT
#include "ScreenshotTour.h"

#include "models/LeftoverCategory.h"
#include "state/AppViewModel.h"

#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPalette>
#include <QPromise>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QSet>
#include <QTimer>

#include <cstdio>
#include <functional>
#include <optional>
#include <utility>

namespace {

constexpr int stepTimeoutMs = 20'000;
constexpr int pollIntervalMs = 50;
// Lets bindings, layouts and the first frame after a change settle before the next step.
constexpr int settleMs = 300;

// Hands on the work's result only once `release` has ended, so a step can photograph it under way.
template<typename T>
QFuture<T> heldUntil(QFuture<T> work, const QFuture<void> &release)
{
    return work.then(QtFuture::Launch::Async, [release](T value) {
        QFuture<void>(release).waitForFinished();
        return value;
    });
}

// Every service is the real one except the update offer, which is fixed so the banner shows, and
// the Trash, which the tour never touches: any attempt comes back as a failure per item. The app list
// and the removed-app scan are held back until their releases end, so both can be seen loading.
AppViewModelServices tourServices(const QFuture<void> &appsRelease, const QFuture<void> &removedScanRelease)
{
    AppViewModelServices services;
    services.discoverInstalledApps = [appsRelease] {
        return heldUntil(AppViewModelServices::real().discoverInstalledApps(), appsRelease);
    };
    services.scanRemovedApps = [removedScanRelease] {
        return heldUntil(AppViewModelServices::real().scanRemovedApps(), removedScanRelease);
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
    return services;
}

// The desktop's own scheme names the pictures: the tour never sets a palette, so a dark picture shows
// what a dark desktop gives the window.
bool desktopIsDark()
{
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

class Tour : public QObject {
public:
    Tour(QQuickWindow *window, QString folder, QObject *parent)
        : QObject(parent), m_window(window), m_folder(std::move(folder)),
          m_viewModel(new AppViewModel(tourServices(m_appsRelease.future(), m_removedScanRelease.future()), this))
    {
        m_appsRelease.start();
        m_removedScanRelease.start();
        m_poll.setInterval(pollIntervalMs);
        connect(&m_poll, &QTimer::timeout, this, &Tour::poll);
        buildSteps();
    }

    void begin()
    {
        if (!QDir().mkpath(m_folder))
            return fail(QStringLiteral("cannot create the folder %1").arg(m_folder));
        // The window starts with its own state object; the tour's one differs only in its update offer.
        m_window->setProperty("viewModel", QVariant::fromValue(m_viewModel));
        startStep();
    }

private:
    struct Step {
        QString waitingFor;
        std::function<bool()> ready;
        std::function<void()> run;
    };

    void add(QString waitingFor, std::function<bool()> ready, std::function<void()> run)
    {
        m_steps.append({std::move(waitingFor), std::move(ready), std::move(run)});
    }
    void add(std::function<void()> run) { add(QString(), [] { return true; }, std::move(run)); }

    // A picture of whatever the window shows now, in the desktop's scheme; a popup is opened for it
    // (`open` until `isOpen`) and closed after it.
    void addShot(const QString &name, const std::function<void()> &open = {}, const std::function<bool()> &isOpen = {},
                 const std::function<void()> &close = {})
    {
        if (open) {
            add(open);
            add(name + QStringLiteral(" to open"), isOpen, [] {});
        }
        add([this, name] { save(name + (desktopIsDark() ? QStringLiteral("-dark.png") : QStringLiteral("-light.png"))); });
        if (close)
            add(close);
    }

    // Scrolls a list of the window, found by its object name, with one of its own functions (QML
    // functions are reachable from C++ by name only).
    void scroll(const char *listName, const char *function, std::optional<int> row = std::nullopt)
    {
        QObject *list = m_window->findChild<QObject *>(QLatin1String(listName));
        if (!list)
            return;
        if (row)
            QMetaObject::invokeMethod(list, function, Q_ARG(int, *row), Q_ARG(int, 2 /* ListView.Center */));
        else
            QMetaObject::invokeMethod(list, function);
    }

    void buildSteps()
    {
        AppViewModel *vm = m_viewModel;
        // While the apps load nothing is selected: the invitation to drop an app.
        add([vm] {
            vm->loadApps();
            vm->checkForUpdates(false);
        });
        addShot(QStringLiteral("welcome"));
        add([this] { m_appsRelease.finish(); });
        add(QStringLiteral("the installed apps and the update offer"),
            [vm] { return !vm->isLoadingApps() && !vm->apps().isEmpty() && vm->availableUpdate().has_value(); },
            [] {});
        addShot(QStringLiteral("installed"));

        add([this, vm] { vm->selectAppById(appToScan()); });
        add(QStringLiteral("the app's selection"), [vm] { return vm->selectedApp().has_value(); }, [] {});
        add([vm] { vm->scanSelectedApp(); });
        add(QStringLiteral("the leftover scan"), [vm] { return !vm->isScanning() && vm->scanResult().has_value(); },
            [] {});
        addShot(QStringLiteral("detail"));

        // The system locations sit in the middle of a long result.
        add([this, vm] {
            const QList<LeftoverItem> &rows = vm->activeItemsModel()->records();
            for (int row = 0; row < rows.size(); ++row) {
                if (LeftoverCategories::systemLevel(rows.at(row).category))
                    return scroll("resultsList", "positionViewAtIndex", row);
            }
            scroll("resultsList", "positionViewAtEnd");
        });
        addShot(QStringLiteral("detail-system"));

        addShot(
            QStringLiteral("trash-dialog"), [vm] { vm->confirmDelete(); }, [vm] { return vm->showDeleteConfirmation(); },
            [vm] { vm->setShowDeleteConfirmation(false); });

        add([vm] {
            vm->setShowUncertainMatches(true);
            vm->switchSidebarMode(SidebarMode::Removed);
        });
        add(QStringLiteral("the removed-app scan to start"), [vm] { return vm->isScanningOrphans(); }, [] {});
        addShot(QStringLiteral("removed-scanning"));
        add([this] { m_removedScanRelease.finish(); });
        add(QStringLiteral("the removed-app scan"),
            [vm] { return !vm->isScanningOrphans() && !vm->orphanedGroups().isEmpty(); }, [] {});
        // The grades run from high to uncertain down the list: its end shows all three.
        add([this] { scroll("orphanList", "positionViewAtEnd"); });
        addShot(QStringLiteral("removed"));

        add([this, vm] { vm->selectOrphanById(groupToShow()); });
        add(QStringLiteral("the removed app's selection"), [vm] { return vm->selectedOrphan().has_value(); }, [] {});
        addShot(QStringLiteral("removed-detail"));

        add([] { QCoreApplication::exit(0); });
    }

    // The app whose scan shows the most kinds of leftovers in the sample Mac, else the first one.
    [[nodiscard]] QString appToScan() const
    {
        for (const InstalledApp &app : m_viewModel->apps()) {
            if (app.bundleIdentifier == QStringLiteral("com.acme.notes"))
                return app.id;
        }
        return m_viewModel->apps().constFirst().id;
    }

    // A group spread over several categories shows the sections best; the first such one wins.
    [[nodiscard]] QString groupToShow() const
    {
        const QList<OrphanedAppGroup> groups = m_viewModel->visibleOrphans();
        if (groups.isEmpty())
            return {};
        const OrphanedAppGroup *best = &groups.constFirst();
        qsizetype bestKinds = 0;
        for (const OrphanedAppGroup &group : groups) {
            QSet<LeftoverCategory> kinds;
            for (const LeftoverItem &item : group.items)
                kinds.insert(item.category);
            if (kinds.size() > bestKinds) {
                best = &group;
                bestKinds = kinds.size();
            }
        }
        return best->id;
    }

    void startStep()
    {
        m_clock.start();
        m_poll.start();
    }

    void poll()
    {
        const Step &step = m_steps.at(m_next);
        if (!step.ready()) {
            if (m_clock.elapsed() > stepTimeoutMs)
                fail(QStringLiteral("timed out after %1 s waiting for %2").arg(stepTimeoutMs / 1000).arg(step.waitingFor));
            return;
        }
        m_poll.stop();
        QTimer::singleShot(settleMs, this, [this] {
            const qsizetype current = m_next++;
            m_steps.at(current).run();
            if (m_next < m_steps.size())
                startStep();
        });
    }

    void save(const QString &fileName)
    {
        const QString path = QDir(m_folder).filePath(fileName);
        if (!m_window->grabWindow().save(path))
            return fail(QStringLiteral("cannot write %1").arg(path));
        std::printf("%s\n", qPrintable(path));
        std::fflush(stdout);
    }

    void fail(const QString &message)
    {
        m_poll.stop();
        m_next = m_steps.size();
        std::fprintf(stderr, "kestrune: screenshot tour: %s\n", qPrintable(message));
        QCoreApplication::exit(1);
    }

    QQuickWindow *m_window;
    QString m_folder;
    QPromise<void> m_appsRelease;
    QPromise<void> m_removedScanRelease;
    AppViewModel *m_viewModel;
    QList<Step> m_steps;
    qsizetype m_next = 0;
    QTimer m_poll;
    QElapsedTimer m_clock;
};

} // namespace

void ScreenshotTour::start(QQmlApplicationEngine &engine, const QString &folder)
{
    auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    auto *tour = new Tour(window, folder, &engine);
    QTimer::singleShot(0, tour, [tour] { tour->begin(); });
}

AppViewModelServices ScreenshotTour::idleServices()
{
    AppViewModelServices services;
    services.discoverInstalledApps = [] {
        QPromise<QList<InstalledApp>> none;
        none.start();
        none.finish();
        return none.future();
    };
    services.checkForUpdate = [] { return QtFuture::makeReadyFuture(std::optional<AppUpdateInfo>()); };
    return services;
}
