// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Run {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Run run(const QStringList &arguments)
{
    QProcess cli;
    cli.start(QStringLiteral(KESTRUNE_BINARY_DIR "/src/cli/kestrune-cli"), arguments);
    Run result;
    if (!cli.waitForFinished(60000) || cli.exitStatus() != QProcess::NormalExit)
        return result;
    result.exitCode = cli.exitCode();
    result.out = cli.readAllStandardOutput();
    result.err = cli.readAllStandardError();
    return result;
}

} // namespace

class CliAppsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        m_root = m_folder.path();
        m_home = m_root + QStringLiteral("/Users/ann");
        TestSupport::writeFile(m_root + QStringLiteral("/Applications/Go.app/Contents/MacOS/Go"), QByteArray(1500, 'g'));
        TestSupport::writeFile(m_root + QStringLiteral("/Applications/Go.app/Contents/Info.plist"),
                               "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>CFBundleName</key><string>Go</string>"
                               "<key>CFBundleIdentifier</key><string>com.example.Go</string></dict></plist>");
        TestSupport::writeFile(m_home + QStringLiteral("/Applications/anon.app/x"), QByteArray(10, 'a'));
    }

    void appsJson()
    {
        const Run result = run({QStringLiteral("--root"), m_root, QStringLiteral("--home"), m_home, QStringLiteral("apps"), QStringLiteral("--json")});
        QCOMPARE(result.exitCode, 0);
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(result.out, &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        const QJsonArray apps = document.object().value(QStringLiteral("apps")).toArray();
        QCOMPARE(apps.size(), 2);
        const QJsonObject anon = apps.at(0).toObject();
        const QJsonObject go = apps.at(1).toObject();
        const QString goPath = m_root + QStringLiteral("/Applications/Go.app");
        QCOMPARE(go.value(QStringLiteral("id")).toString(), goPath);
        QCOMPARE(go.value(QStringLiteral("path")).toString(), goPath);
        QCOMPARE(go.value(QStringLiteral("name")).toString(), QStringLiteral("Go"));
        QCOMPARE(go.value(QStringLiteral("bundleIdentifier")).toString(), QStringLiteral("com.example.Go"));
        QVERIFY(go.value(QStringLiteral("size")).isDouble());
        QCOMPARE(go.value(QStringLiteral("formattedSize")).toString(), QStringLiteral("2 KB"));
        QCOMPARE(anon.value(QStringLiteral("name")).toString(), QStringLiteral("anon"));
        QVERIFY(anon.value(QStringLiteral("bundleIdentifier")).isNull());
        QCOMPARE(anon.value(QStringLiteral("size")).toInteger(), 10);
        QCOMPARE(anon.value(QStringLiteral("formattedSize")).toString(), QStringLiteral("10 bytes"));
    }

    void size()
    {
        const QString bundle = m_root + QStringLiteral("/Applications/Go.app");
        Run result = run({QStringLiteral("size"), bundle});
        QCOMPARE(result.exitCode, 0);
        const QList<QByteArray> words = result.out.trimmed().split(' ');
        QCOMPARE(words.constFirst().toLongLong(), 1500 + QFileInfo(bundle + QStringLiteral("/Contents/Info.plist")).size());

        result = run({QStringLiteral("size"), bundle, QStringLiteral("--limit"), QStringLiteral("0")});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out.trimmed(), QByteArray("0"));

        result = run({QStringLiteral("size"), m_root + QStringLiteral("/nothing-here")});
        QCOMPARE(result.exitCode, 1);
        QVERIFY(!result.err.isEmpty());
    }

    void usageErrors_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("unknown command") << QStringList{QStringLiteral("frobnicate")};
        QTest::newRow("no command") << QStringList{};
        QTest::newRow("unknown apps flag") << QStringList{QStringLiteral("apps"), QStringLiteral("--jsn")};
        QTest::newRow("apps with argument") << QStringList{QStringLiteral("apps"), QStringLiteral("extra")};
        QTest::newRow("size without path") << QStringList{QStringLiteral("size")};
        QTest::newRow("unknown size flag") << QStringList{QStringLiteral("size"), QStringLiteral("/"), QStringLiteral("--fast")};
        QTest::newRow("negative limit") << QStringList{QStringLiteral("size"), QStringLiteral("/"), QStringLiteral("--limit"), QStringLiteral("-1")};
        QTest::newRow("word limit") << QStringList{QStringLiteral("size"), QStringLiteral("/"), QStringLiteral("--limit"), QStringLiteral("many")};
    }
    void usageErrors()
    {
        QFETCH(QStringList, arguments);
        const Run result = run(arguments);
        QCOMPARE(result.exitCode, 2);
        QVERIFY(result.out.isEmpty());
        QVERIFY(result.err.contains("Usage:"));
    }

private:
    QTemporaryDir m_folder;
    QString m_root;
    QString m_home;
};

QTEST_GUILESS_MAIN(CliAppsTest)
#include "tst_cli_apps.moc"
