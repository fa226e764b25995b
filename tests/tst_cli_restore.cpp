// SPDX-License-Identifier: MIT
// `kestrune-cli restore` against a sample Mac whose items went to a Trash in the test's sandbox:
// everything comes back byte for byte.
#include "TestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using TestSupport::jsonPaths;
using TestSupport::Run;

namespace {

// Every entry under folder: its kind, and a file's hash or a link's target, never following links (the
// sample holds a link loop).
QByteArray snapshot(const QString &folder)
{
    return TestSupport::runProgram(QStringLiteral("sh"), {"-c", "cd \"$0\" && find . -printf '%y %p %l\\n' | sort && find . -type f -exec sha256sum {} + | sort", folder}).out;
}

} // namespace

class CliRestoreTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;

    Run cli(const QStringList &arguments)
    {
        return TestSupport::runCli(QStringList{"--root", m_root, "--home", TestSupport::sampleHome(m_root)} + arguments);
    }

    // Removes the first app whose scan finds at least three items and returns the moved paths.
    QStringList removeAnApp()
    {
        const QJsonArray apps = QJsonDocument::fromJson(cli({"apps", "--json"}).out)[u"apps"].toArray();
        for (const QJsonValue &app : apps) {
            const QString path = app[u"path"].toString();
            const QJsonArray items = QJsonDocument::fromJson(cli({"scan", path, "--json"}).out)[u"items"].toArray();
            if (items.size() < 3 || path.contains(QChar::ReplacementCharacter))
                continue;
            const Run removed = cli({"remove", path, "--yes", "--json"});
            if (removed.exitCode != 0)
                continue;
            return jsonPaths(QJsonDocument::fromJson(removed.out)[u"deleted"]);
        }
        return {};
    }

private Q_SLOTS:
    void init()
    {
        QDir(TestSupport::homeTrash()).removeRecursively();
        m_root = TestSupport::caseFolder(m_dir);
        QString log;
        QVERIFY2(TestSupport::generateSampleMac(m_root, 1, QStringLiteral("small"), &log), qPrintable(log));
    }

    void restoresAppByteForByte()
    {
        const QByteArray before = snapshot(m_root);
        QVERIFY(before.count('\n') > 500);
        const QStringList moved = removeAnApp();
        QVERIFY(moved.size() >= 3);
        QVERIFY(snapshot(m_root) != before);

        const Run restored = cli(QStringList{"restore"} + moved + QStringList{"--json"});
        QCOMPARE(restored.exitCode, 0);
        const QJsonObject report = QJsonDocument::fromJson(restored.out).object();
        QCOMPARE(report.keys(), (QStringList{"failed", "restored"}));
        QStringList back = jsonPaths(report[u"restored"]);
        QStringList expected = moved;
        back.sort();
        expected.sort();
        QCOMPARE(back, expected);
        QVERIFY(snapshot(m_root) == before);
        QVERIFY(TestSupport::trashedIn(TestSupport::homeTrash()).isEmpty());

        // Nothing left to put back: each path is reported, exit 1. What took an item's place is the
        // service's own test.
        const Run again = cli({"restore", moved.first()});
        QCOMPARE(again.exitCode, 1);
        QVERIFY2(again.out.contains("FAILED") && again.err.contains("1 item could not be put back"), again.err.constData());
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    CliRestoreTest test;
    return TestSupport::execWithPrivateTrash(&test, argc, argv);
}

#include "tst_cli_restore.moc"
