// SPDX-License-Identifier: MIT
// `kestrune-cli remove` run in-process with its stdin, stdout and stderr redirected, against items in a
// temporary folder; HOME and XDG_DATA_HOME point into the sandbox before GLib first reads them.
#include "TestSupport.h"

#include "cli/Commands.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>

namespace {

// Stand-in for the removed-app scan: the one group the test sets up, and how often it was asked.
QList<LeftoverItem> groupItems;
int lookups = 0;

using TestSupport::Run;

enum class Input { none, terminal };

// Runs the command with fd 0 either /dev/null or a pseudo-terminal already holding `typed`.
Run runRemove(const QStringList &arguments, Input input = Input::none, const QByteArray &typed = QByteArray())
{
    std::fflush(stdout);
    std::fflush(stderr);
    QTemporaryFile out, err;
    if (!out.open() || !err.open())
        qFatal("cannot capture output");
    const int savedIn = ::dup(0), savedOut = ::dup(1), savedErr = ::dup(2);
    int master = -1;
    if (input == Input::terminal) {
        master = ::posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0)
            qFatal("no pseudo-terminal");
        const int slave = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
        if (::write(master, typed.constData(), typed.size()) != typed.size())
            qFatal("cannot type into the pseudo-terminal");
        ::dup2(slave, 0);
        ::close(slave);
    } else {
        const int null = ::open("/dev/null", O_RDONLY);
        ::dup2(null, 0);
        ::close(null);
    }
    clearerr(stdin);
    ::dup2(out.handle(), 1);
    ::dup2(err.handle(), 2);

    Run run;
    run.exitCode = Commands::remove(arguments);

    std::fflush(stdout);
    std::fflush(stderr);
    ::dup2(savedIn, 0);
    ::dup2(savedOut, 1);
    ::dup2(savedErr, 2);
    for (int fd : {savedIn, savedOut, savedErr, master})
        if (fd >= 0)
            ::close(fd);
    clearerr(stdin);
    out.seek(0);
    err.seek(0);
    run.out = out.readAll();
    run.err = err.readAll();
    return run;
}

QStringList jsonPaths(const QJsonArray &items)
{
    QStringList paths;
    for (const QJsonValue &item : items)
        paths.append(item.toObject().value(QStringLiteral("path")).toString());
    return paths;
}

QStringList trashedOriginals()
{
    QStringList originals;
    for (const TestSupport::Trashed &entry : TestSupport::trashedIn(TestSupport::homeTrash()))
        originals.append(QString::fromUtf8(entry.originalPath));
    originals.sort();
    return originals;
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
    ++lookups;
    if (id != QLatin1String("com.example.gone")) {
        *error = QStringLiteral("no removed-app group \"%1\"").arg(id);
        return std::nullopt;
    }
    OrphanedAppGroup group;
    group.id = id;
    group.displayName = QStringLiteral("Gone");
    group.items = groupItems;
    return group;
}

} // namespace Commands

class CliRemoveTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_home;
    QString m_support, m_cache, m_prefs, m_vanished;

private Q_SLOTS:
    void init()
    {
        QDir(TestSupport::homeTrash()).removeRecursively();
        m_home = TestSupport::useSampleLayout(TestSupport::caseFolder(m_dir));
        m_support = m_home + QStringLiteral("/Library/Application Support/Gone");
        m_cache = m_home + QStringLiteral("/Library/Caches/com.example.gone");
        m_prefs = m_home + QStringLiteral("/Library/Preferences/com.example.gone.plist");
        m_vanished = m_home + QStringLiteral("/Library/Logs/Gone/never-there.log");
        TestSupport::writeFile(m_support + QStringLiteral("/db.sqlite"), "db");
        TestSupport::writeFile(m_cache + QStringLiteral("/blob"), "cache");
        TestSupport::writeFile(m_prefs, "prefs");
        groupItems = {LeftoverItem::at(m_prefs, LeftoverCategory::preferences, 5),
                      LeftoverItem::at(m_support, LeftoverCategory::applicationSupport, 2),
                      LeftoverItem::at(m_cache, LeftoverCategory::caches, 5)};
        lookups = 0;
    }

    void usageErrorsMoveNothing_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("nothing named") << QStringList{"--yes"};
        QTest::newRow("target and group") << QStringList{"Gone", "--orphan", "com.example.gone", "--yes"};
        QTest::newRow("two targets") << QStringList{"Gone", "Other", "--yes"};
        // Without a terminal to ask on and without --yes, it refuses rather than guess, before scanning.
        QTest::newRow("no terminal, no --yes") << QStringList{"--orphan", "com.example.gone", "--json"};
    }

    void usageErrorsMoveNothing()
    {
        QFETCH(QStringList, arguments);
        const Run run = runRemove(arguments);
        QCOMPARE(run.exitCode, 2);
        QVERIFY(!run.err.isEmpty());
        QVERIFY(run.out.isEmpty());
        QCOMPARE(lookups, 0);
        QVERIFY(trashedOriginals().isEmpty());
        QVERIFY(QFile::exists(m_prefs));
    }

    void unknownTargetOrGroup_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("target") << QStringList{"Nowhere", "--yes"};
        QTest::newRow("group") << QStringList{"--orphan", "com.example.other", "--yes", "--json"};
    }

    void unknownTargetOrGroup()
    {
        QFETCH(QStringList, arguments);
        const Run run = runRemove(arguments);
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.contains("Nowhere") || run.err.contains("com.example.other"), run.err.constData());
        QVERIFY(run.out.isEmpty());
        QVERIFY(trashedOriginals().isEmpty());
    }

    void dryRunListsInProcessingOrderAndMovesNothing()
    {
        const Run run = runRemove({"--orphan", "com.example.gone", "--dry-run", "--json"});
        QCOMPARE(run.exitCode, 0);
        const QJsonObject report = QJsonDocument::fromJson(run.out).object();
        QCOMPARE(report.value(QStringLiteral("dryRun")), QJsonValue(true));
        QCOMPARE(jsonPaths(report.value(QStringLiteral("deleted")).toArray()), (QStringList{m_prefs, m_support, m_cache}));
        QCOMPARE(report.value(QStringLiteral("failed")).toArray().size(), 0);
        QVERIFY(trashedOriginals().isEmpty());
        QVERIFY(QFile::exists(m_prefs) && QFile::exists(m_support) && QFile::exists(m_cache));
    }

    void reportsEveryMovedAndFailedItem()
    {
        groupItems.append(LeftoverItem::at(m_vanished, LeftoverCategory::logs, 0));
        const Run run = runRemove({"--orphan", "com.example.gone", "--yes", "--json"});
        QCOMPARE(run.exitCode, 1);
        const QJsonObject report = QJsonDocument::fromJson(run.out).object();
        QCOMPARE(report.keys(), (QStringList{"deleted", "dryRun", "failed"}));
        QCOMPARE(report.value(QStringLiteral("dryRun")), QJsonValue(false));
        QCOMPARE(jsonPaths(report.value(QStringLiteral("deleted")).toArray()), (QStringList{m_prefs, m_support, m_cache}));
        const QJsonArray failed = report.value(QStringLiteral("failed")).toArray();
        QCOMPARE(failed.size(), 1);
        const QJsonObject failure = failed.first().toObject();
        QCOMPARE(failure.keys(), (QStringList{"item", "message"}));
        QCOMPARE(failure.value(QStringLiteral("item")).toObject().value(QStringLiteral("path")).toString(), m_vanished);
        QVERIFY(!failure.value(QStringLiteral("message")).toString().isEmpty());
        QVERIFY(run.err.contains("could not be moved"));
        QCOMPARE(trashedOriginals().size(), 3);
    }

    void terminalConfirmation_data()
    {
        QTest::addColumn<QByteArray>("typed");
        QTest::addColumn<bool>("moves");
        QTest::newRow("yes") << QByteArray("y\n") << true;
        QTest::newRow("YES") << QByteArray("YES\n") << true;
        QTest::newRow("just return") << QByteArray("\n") << false;
    }

    void terminalConfirmation()
    {
        QFETCH(QByteArray, typed);
        QFETCH(bool, moves);
        const Run run = runRemove({"--orphan", "com.example.gone"}, Input::terminal, typed);
        QCOMPARE(run.exitCode, moves ? 0 : 1);
        QVERIFY2(run.err.contains("Move 3 items"), run.err.constData());
        QCOMPARE(QFile::exists(m_prefs), !moves);
        QCOMPARE(trashedOriginals().size(), moves ? 3 : 0);
        if (moves)
            QVERIFY2(run.out.contains("Moved 3 items"), run.out.constData());
    }

    void emptyGroupIsNothingToDo()
    {
        groupItems.clear();
        const Run run = runRemove({"--orphan", "com.example.gone", "--yes"});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.out.contains("Nothing to move"));
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    CliRemoveTest test;
    return TestSupport::execWithPrivateTrash(&test, argc, argv);
}

#include "tst_cli_remove.moc"
