// SPDX-License-Identifier: MIT
// Drives the state object with the real services over a large sample Mac while a main-thread timer
// records the longest gap between its ticks: a long gap is a frozen window.
//
//     responsiveness [--sample DIR]    (without --sample, a large sample Mac is generated in /tmp)

#include "platform/FileSystemLayout.h"
#include "platform/NativePath.h"
#include "state/AppViewModel.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <filesystem>
#include <cstdio>
#include <functional>

namespace {

constexpr int tickIntervalMs = 2;
constexpr int phaseTimeoutMs = 600000;

class StallMeter {
public:
    StallMeter()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(tickIntervalMs);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            m_maxGap = std::max(m_maxGap, m_sinceTick.restart());
        });
    }
    void start()
    {
        m_maxGap = 0;
        m_sinceTick.start();
        m_timer.start();
    }
    qint64 stop()
    {
        m_timer.stop();
        return std::max(m_maxGap, m_sinceTick.elapsed());
    }

private:
    QTimer m_timer;
    QElapsedTimer m_sinceTick;
    qint64 m_maxGap = 0;
};

// Runs the event loop until done() holds; the meter's ticks are part of that loop.
bool runUntil(const std::function<bool()> &done)
{
    QDeadlineTimer deadline(phaseTimeoutMs);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }
    return true;
}

qint64 g_worstStall = 0;

void measure(const char *phase, StallMeter &meter, const std::function<void()> &action, const std::function<bool()> &done)
{
    QElapsedTimer clock;
    clock.start();
    meter.start();
    action();
    const bool finished = runUntil(done);
    const qint64 stall = meter.stop();
    g_worstStall = std::max(g_worstStall, stall);
    std::printf("%-22s %8lld ms  max_stall %5lld ms%s\n", phase, static_cast<long long>(clock.elapsed()),
                static_cast<long long>(stall), finished ? "" : "  (timed out)");
    std::fflush(stdout);
}

bool generateSample(const QString &folder)
{
    QProcess generator;
    generator.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    generator.start(QStringLiteral("python3"), {QStringLiteral(KESTRUNE_SAMPLE_MAC_TOOL), QStringLiteral("--out"), folder,
                                                QStringLiteral("--scale"), QStringLiteral("large")});
    return generator.waitForFinished(phaseTimeoutMs) && generator.exitStatus() == QProcess::NormalExit
        && generator.exitCode() == 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();

    QTemporaryDir scratch(QStringLiteral("/tmp/kestrune-responsiveness-XXXXXX"));
    if (!scratch.isValid()) {
        std::fprintf(stderr, "cannot create a folder in /tmp\n");
        return 1;
    }
    // The sample holds names that are not UTF-8 and read-only folders, which QTemporaryDir leaves.
    scratch.setAutoRemove(false);
    const std::filesystem::path scratchPath = NativePath::encode(scratch.path()).toStdString();
    const auto removeScratch = qScopeGuard([&] {
        std::error_code ignored;
        std::filesystem::remove_all(scratchPath, ignored);
    });
    // Nothing is moved below, but a Trash must never be the real one.
    qputenv("XDG_DATA_HOME", scratch.filePath(QStringLiteral("xdg")).toLocal8Bit());

    QString root;
    const qsizetype sampleIndex = arguments.indexOf(QStringLiteral("--sample"));
    if (sampleIndex >= 0 && sampleIndex + 1 < arguments.size()) {
        root = arguments.at(sampleIndex + 1);
    } else {
        root = scratch.filePath(QStringLiteral("mac"));
        std::printf("generating a large sample Mac in %s\n", qPrintable(root));
        std::fflush(stdout);
        if (!generateSample(root)) {
            std::fprintf(stderr, "the sample-Mac generator failed\n");
            return 1;
        }
    }
    FileSystemLayout::setRoot(root);
    FileSystemLayout::setHome(root + QStringLiteral("/Users/ann"));

    // Real services, except a deletion that only reports and a silent completion.
    AppViewModelServices services = AppViewModelServices::real();
    services.moveToTrash = [](const QList<LeftoverItem> &items) {
        return QtConcurrent::run([items] { return DeletionReport{items, {}}; });
    };
    services.playDeletionComplete = [] {};
    services.checkForUpdate = [] { return QtFuture::makeReadyFuture(std::optional<AppUpdateInfo>()); };
    AppViewModel model(services);
    StallMeter meter;

    measure("load apps", meter, [&] { model.loadApps(); }, [&] { return !model.isLoadingApps(); });
    std::printf("  %lld apps\n", static_cast<long long>(model.apps().size()));

    const auto biggest = std::max_element(model.apps().cbegin(), model.apps().cend(),
                                          [](const InstalledApp &a, const InstalledApp &b) { return a.size < b.size; });
    if (biggest != model.apps().cend()) {
        const InstalledApp app = *biggest;
        model.selectApp(app);
        measure("scan biggest app", meter, [&] { model.scanSelectedApp(); }, [&] { return !model.isScanning(); });
        std::printf("  %s: %lld items\n", qPrintable(app.name),
                    static_cast<long long>(model.scanResult() ? model.scanResult()->items.size() : 0));
    }

    measure("removed-app scan", meter, [&] { model.switchSidebarMode(SidebarMode::Removed); },
            [&] { return !model.isScanningOrphans(); });
    std::printf("  %lld groups\n", static_cast<long long>(model.orphanedGroups().size()));

    // The deletion ends with a refresh of its mode; waiting for that refresh covers the whole flow.
    if (model.selectedItems().isEmpty() && biggest != model.apps().cend()) {
        model.switchSidebarMode(SidebarMode::Installed);
        model.selectApp(*biggest);
        model.scanSelectedApp();
        runUntil([&] { return !model.isScanning(); });
    }
    if (model.selectedItems().isEmpty()) {
        std::printf("dry deletion           skipped: nothing to select yet\n");
    } else {
        int refreshes = 0;
        const QMetaObject::Connection counting =
            model.sidebarMode() == SidebarMode::Removed
            ? QObject::connect(&model, &AppViewModel::orphanedGroupsChanged, &model, [&] { ++refreshes; })
            : QObject::connect(&model, &AppViewModel::appsChanged, &model, [&] { ++refreshes; });
        std::printf("  %lld items selected\n", static_cast<long long>(model.selectedItems().size()));
        measure("dry deletion", meter, [&] { model.deleteSelectedItems(); },
                [&] { return !model.isDeleting() && refreshes > 0 && !model.isScanning(); });
        QObject::disconnect(counting);
    }

    std::printf("max_stall_ms %lld (target < 50)\n", static_cast<long long>(g_worstStall));
    return 0;
}
