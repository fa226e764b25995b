// SPDX-License-Identifier: MIT
// `kestrune-cli remove` run in-process with its stdin, stdout and stderr redirected, against items in a
// temporary folder; HOME and XDG_DATA_HOME point into the sandbox before GLib first reads them.
#include "TestSupport.h"

#include "cli/Commands.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryFile>
#include <QTest>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>

namespace {

using TestSupport::jsonPaths;
using TestSupport::Run;

// Stand-in for the removed-app scan: the one group the test sets up.
QList<LeftoverItem> groupItems;

// Runs the command with fd 0 either /dev/null or, given `typed`, a pseudo-terminal already holding it.
Run runRemove(const QStringList &arguments, const std::optional<QByteArray> &typed = std::nullopt)
{
    std::fflush(nullptr);
    QTemporaryFile out, err;
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (!out.open() || !err.open() || master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0)
        qFatal("cannot redirect the command's input and output");
    const int in = typed ? ::open(::ptsname(master), O_RDWR | O_NOCTTY) : ::open("/dev/null", O_RDONLY);
    if (typed && ::write(master, typed->constData(), typed->size()) != typed->size())
        qFatal("cannot type into the pseudo-terminal");
    const int saved[] = {::dup(0), ::dup(1), ::dup(2)}, redirected[] = {in, out.handle(), err.handle()};
    for (int fd = 0; fd < 3; ++fd)
        ::dup2(redirected[fd], fd);
    ::close(in);
    clearerr(stdin);
    Run run;
    run.exitCode = Commands::remove(arguments);
    std::fflush(nullptr);
    for (int fd = 0; fd < 3; ++fd) {
        ::dup2(saved[fd], fd);
        ::close(saved[fd]);
    }
    ::close(master);
    run.out = TestSupport::readBytes(out.fileName());
    run.err = TestSupport::readBytes(err.fileName());
    return run;
}

} // namespace

namespace Commands {

std::optional<InstalledApp> resolveApp(const QString &target, QString *error)
{
    *error = QStringLiteral("no installed app matches \"%1\"").arg(target);
    return std::nullopt;
}

std::optional<OrphanedAppGroup> findOrphanGroup(const QString &id, QString *error)
{
    if (id == QLatin1String("com.example.gone"))
        return OrphanedAppGroup{id, QStringLiteral("Gone"), std::nullopt, OrphanConfidence::high, QString(), groupItems};
    *error = QStringLiteral("no removed-app group \"%1\"").arg(id);
    return std::nullopt;
}

} // namespace Commands

class CliRemoveTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QStringList m_paths; // in processing order

private Q_SLOTS:
    void init()
    {
        QDir(TestSupport::homeTrash()).removeRecursively();
        const QString library = TestSupport::useSampleLayout(TestSupport::caseFolder(m_dir)) + QStringLiteral("/Library/");
        m_paths = QStringList{"Application Support/com.example.gone", "Caches/com.example.gone", "Logs/Gone"};
        for (QString &path : m_paths)
            TestSupport::writeFile(path.prepend(library) + QStringLiteral("/data"), "x");
        groupItems = {LeftoverItem::at(m_paths.at(2), LeftoverCategory::logs, 5),
                      LeftoverItem::at(m_paths.at(0), LeftoverCategory::applicationSupport, 5),
                      LeftoverItem::at(m_paths.at(1), LeftoverCategory::caches, 2)};
    }

    // Refusals, a declined prompt and a dry run: each leaves every item in place. Refusing without a
    // terminal and an unknown group are tst_cli_reference's cases.
    void nothingMoves_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("typed"); // null: no terminal
        QTest::addColumn<int>("exitCode");
        QTest::newRow("nothing named") << QStringList{"--yes"} << QByteArray() << 2;
        QTest::newRow("unknown target") << QStringList{"Nowhere", "--yes"} << QByteArray() << 1;
        QTest::newRow("declined") << QStringList{"--orphan", "com.example.gone"} << QByteArray("\n") << 1;
        QTest::newRow("dry run") << QStringList{"--orphan", "com.example.gone", "--dry-run", "--json"} << QByteArray() << 0;
    }

    void nothingMoves()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, typed);
        QFETCH(int, exitCode);
        const Run run = runRemove(arguments, typed.isNull() ? std::nullopt : std::optional(typed));
        QCOMPARE(run.exitCode, exitCode);
        QCOMPARE(run.err.isEmpty(), exitCode == 0);
        QVERIFY(QFile::exists(m_paths.at(0)) && TestSupport::trashedCount() == 0);
        if (exitCode == 0)
            QCOMPARE(jsonPaths(QJsonDocument::fromJson(run.out)[QStringLiteral("deleted")]), m_paths);
    }

    void confirmedOnTerminal()
    {
        const Run run = runRemove({"--orphan", "com.example.gone"}, QByteArray("YES\n"));
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.err.contains("Move 3 items") && run.out.contains("Moved 3 items"), run.err.constData());
        QCOMPARE(TestSupport::trashedCount(), 3);
    }

    void reportsEachMovedAndFailedItem()
    {
        const QString vanished = m_paths.at(1) + QStringLiteral("/never-there");
        groupItems.append(LeftoverItem::at(vanished, LeftoverCategory::logs, 0));
        const Run run = runRemove({"--orphan", "com.example.gone", "--yes", "--json"});
        QCOMPARE(run.exitCode, 1);
        QVERIFY(run.err.contains("could not be moved"));
        const QJsonObject report = QJsonDocument::fromJson(run.out).object();
        QCOMPARE(report.keys(), (QStringList{"deleted", "dryRun", "failed", "kept"}));
        QCOMPARE(jsonPaths(report[QStringLiteral("deleted")]), m_paths);
        QCOMPARE(jsonPaths(report[QStringLiteral("failed")]), QStringList{vanished});
        QVERIFY(!report[QStringLiteral("failed")][0][QStringLiteral("message")].toString().isEmpty());
        QCOMPARE(TestSupport::trashedCount(), 3);
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    CliRemoveTest test;
    return TestSupport::execWithPrivateTrash(&test, argc, argv);
}

#include "tst_cli_remove.moc"
