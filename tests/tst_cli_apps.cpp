// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using TestSupport::Run;

// Hostile names, which the command line's reference files had better not hold raw.
class CliAppsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Names come from Info.plists anyone can write: on a terminal their control characters show as
    // escapes (no screen clear, no title change, no carriage return over the line); JSON keeps them.
    void controlCharactersInNames()
    {
        QTemporaryDir dir;
        const QString name = QStringLiteral("Evil\x1b[2J\x1b]0;owned\x07\rFine\u202Etxt.exe\u009b1m");
        TestSupport::writeApp(dir.path() + QStringLiteral("/Applications/Evil.app"), name, QStringLiteral("com.example.\x1b[31mred"));
        TestSupport::makeFolder(dir.path() + QStringLiteral("/Users/ann"));
        const Run human = TestSupport::runCliOn(dir.path(), dir.path() + QStringLiteral("/Users/ann"), {QStringLiteral("apps")});
        QCOMPARE(human.exitCode, 0);
        for (const char *raw : {"\x1b", "\x07", "\r", "\u202E", "\u009b"})
            QVERIFY2(!QString::fromUtf8(human.out).contains(QString::fromUtf8(raw)), raw);
        QVERIFY2(human.out.contains(R"(Evil\x1B[2J\x1B]0;owned\x07\x0DFine\u202Etxt.exe\u009B1m)"), human.out.constData());
        QVERIFY(human.out.contains(R"(com.example.\x1B[31mred)"));
        const Run json = TestSupport::runCliOn(dir.path(), dir.path() + QStringLiteral("/Users/ann"), {QStringLiteral("apps"), QStringLiteral("--json")});
        QCOMPARE(QJsonDocument::fromJson(json.out)[u"apps"][0][u"name"].toString(), name);
    }
};

QTEST_GUILESS_MAIN(CliAppsTest)
#include "tst_cli_apps.moc"
