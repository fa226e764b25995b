// SPDX-License-Identifier: MIT
// kestrune-cli on a generated sample Mac, each run compared whole (exit code, stdout, stderr) with its
// file in tests/reference. The sample's root, its home and the Trash are written there as $ROOT, $HOME
// and $TRASH. After a deliberate change of the output, KESTRUNE_UPDATE_REFERENCES=1 rewrites the files;
// read their diff before committing it.
#include "TestSupport.h"

#include <QJsonDocument>
#include <QTest>

class CliReferenceTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root;

    // Every entry of the sample: its kind, and a file's hash or a link's target, never following links
    // (the sample holds a link loop).
    QByteArray snapshot() const
    {
        return TestSupport::runProgram(QStringLiteral("sh"), {"-c", "cd \"$0\" && find . -printf '%y %p %l\\n' | sort && find . -type f -exec sha256sum {} + | sort", m_root}).out;
    }

    // Runs the command line and compares its exit code, stdout and stderr with the reference file name;
    // out receives stdout as it came. Arguments name the sample as $ROOT and $HOME, and run on it unless
    // they begin with global options of their own; a last argument beginning with ">" redirects stdout
    // as a shell does.
    void check(const QString &name, QStringList arguments, QByteArray *out = nullptr) const
    {
        if (!arguments.constFirst().startsWith(QLatin1String("--")))
            arguments = QStringList{"--root", "$ROOT", "--home", "$HOME"} + arguments;
        // Longest first: the home lies inside the root.
        const QList<std::pair<QString, QString>> places{
            {TestSupport::homeTrash(), "$TRASH"}, {TestSupport::sampleHome(m_root), "$HOME"}, {m_root, "$ROOT"}};
        QStringList expanded = arguments;
        for (const auto &[path, placeholder] : places)
            expanded.replaceInStrings(placeholder, path);
        const QString redirection = expanded.constLast().startsWith(u'>') ? expanded.takeLast() : QString();
        // The display order follows the user's language: the files hold the one of the "C" locale.
        const QString script = QStringLiteral("export LC_ALL=C.UTF-8; exec \"$0\" \"$@\" ") + redirection;
        const TestSupport::Run run = TestSupport::runProgram(
            QStringLiteral("/bin/sh"), QStringList{"-c", script, QStringLiteral(KESTRUNE_BINARY_DIR "/src/cli/kestrune-cli")} + expanded);
        if (out)
            *out = run.out;
        for (QString &word : arguments)
            word = word.contains(u' ') ? u'"' + word + u'"' : word;
        QByteArray actual = "$ kestrune-cli " + arguments.join(u' ').toUtf8() + "\nexit code " + QByteArray::number(run.exitCode)
                            + "\n--- stdout\n" + run.out + "--- stderr\n" + run.err;
        for (const auto &[path, placeholder] : places)
            actual.replace(path.toUtf8(), placeholder.toUtf8());

        const QString file = QStringLiteral(KESTRUNE_SOURCE_DIR "/tests/reference/") + name + QStringLiteral(".txt");
        if (actual == TestSupport::readBytes(file))
            return;
        if (qEnvironmentVariableIntValue("KESTRUNE_UPDATE_REFERENCES") == 1) {
            TestSupport::writeFile(file, actual);
            return qInfo("rewrote %s", qPrintable(file));
        }
        const QString written = m_dir.path() + QLatin1Char('/') + name + QStringLiteral(".txt");
        TestSupport::writeFile(written, actual);
        const QByteArray diff = TestSupport::runProgram(QStringLiteral("diff"), {"-u", file, written}).out.left(6000);
        QFAIL(qPrintable(file + QStringLiteral(" differs (KESTRUNE_UPDATE_REFERENCES=1 rewrites it):\n") + QString::fromUtf8(diff)));
    }

private Q_SLOTS:
    void initTestCase()
    {
#ifdef Q_OS_MACOS
        QSKIP("APFS folds letter case and refuses names that are not UTF-8, so the sample Mac differs there");
#endif
        // Names that are not UTF-8, which QTemporaryDir cannot delete.
        m_dir.setAutoRemove(false);
        TestSupport::sweepOnExit(m_dir.path());
        m_root = m_dir.path() + QStringLiteral("/mac");
        QString log;
        QVERIFY2(TestSupport::generateSampleMac(m_root, 1, QStringLiteral("small"), &log), qPrintable(log));
        // The sample's unreadable folders stop only a user without root's rights; opened up, every user
        // sees the same sample. Passing over them is the scanners' own test.
        QCOMPARE(TestSupport::runProgram(QStringLiteral("chmod"), {"-R", "u+rwX", m_root}).exitCode, 0);
    }

    void reference_data()
    {
        QTest::addColumn<QStringList>("arguments");
        // Help and refusals.
        QTest::newRow("help") << QStringList{"--help"};
        for (const char *command : {"apps", "scan", "orphans", "remove", "restore", "size", "check-update"})
            QTest::newRow(qPrintable(QStringLiteral("help-") + QLatin1String(command))) << QStringList{QLatin1String(command), "-h"};
        QTest::newRow("refused-no-command") << QStringList{"--root", "$ROOT"};
        QTest::newRow("refused-unknown-command") << QStringList{"frobnicate"};
        QTest::newRow("refused-root-not-a-folder") << QStringList{"--root", "/dev/null", "apps"};
        QTest::newRow("refused-unknown-flag") << QStringList{"apps", "--jsn"};
        QTest::newRow("refused-extra-argument") << QStringList{"apps", "extra"};
        QTest::newRow("refused-missing-argument") << QStringList{"size"};
        QTest::newRow("refused-bad-limit") << QStringList{"size", "/", "--limit", "-1"};
        QTest::newRow("refused-bad-feed") << QStringList{"check-update", "--feed", "file:///etc/passwd"};
        QTest::newRow("refused-size-of-nothing") << QStringList{"size", "$ROOT/nothing-here"};
        QTest::newRow("refused-remove-unconfirmed") << QStringList{"remove", "Go"};
        QTest::newRow("refused-full-disk-json") << QStringList{"apps", "--json", ">/dev/full"};
        QTest::newRow("refused-full-disk-table") << QStringList{"apps", ">/dev/full"};
        QTest::newRow("refused-full-disk-help") << QStringList{"apps", "--help", ">/dev/full"};
        QTest::newRow("refused-closed-stdout-json") << QStringList{"apps", "--json", ">&-"};
        QTest::newRow("refused-closed-stdout-size") << QStringList{"size", "/dev/null", ">&-"};
        QTest::newRow("refused-remove-both-targets") << QStringList{"remove", "Go", "--orphan", "com.vanished.writer", "--dry-run"};
        // Installed apps: columns by display width (CJK, emoji, decomposed accents), and the JSON shape.
        QTest::newRow("apps") << QStringList{"apps"};
        QTest::newRow("apps-json") << QStringList{"apps", "--json"};
        QTest::newRow("size") << QStringList{"size", "$ROOT/Applications/Zeta Tools.app"};
        // Target resolution: name or identifier in any case, a path, twins, no match.
        QTest::newRow("scan-go-identifier-json") << QStringList{"scan", "COM.EXAMPLE.go", "--json"};
        QTest::newRow("scan-acme-notes-why") << QStringList{"scan", "aCME nOTES", "--why"};
        QTest::newRow("scan-zeta-tools-path") << QStringList{"scan", "$ROOT/Applications/Zeta Tools.app/"};
        QTest::newRow("scan-not-installed-json") << QStringList{"scan", "$HOME/Downloads/Paintbox.app", "--json"};
        QTest::newRow("scan-x-no-bundle-why") << QStringList{"scan", "X", "--why"};
        QTest::newRow("scan-twins") << QStringList{"scan", "PIXEL RULER"};
        QTest::newRow("scan-twin-by-identifier-why") << QStringList{"scan", "com.pixelruler.pixelruler.BETA", "--why"};
        QTest::newRow("scan-twin-release-why") << QStringList{"scan", "com.pixelruler.PixelRuler", "--why"};
        QTest::newRow("scan-unknown") << QStringList{"scan", "Nothing Like It"};
        QTest::newRow("scan-partial-name") << QStringList{"scan", "Acme"};
        // Whose each item is, and how it was found.
        for (const char *app : {"Harbor Desktop", "Beacon Desktop", "Fork", "OBS", "Studio", "Home Tool"})
            QTest::newRow(qPrintable(QStringLiteral("scan-%1-why").arg(QString::fromLatin1(app).toLower().replace(u' ', u'-')))) << QStringList{"scan", app, "--why"};
        QTest::newRow("remove-fork-dry-run") << QStringList{"remove", "Fork", "--dry-run"};
        QTest::newRow("remove-fork-dry-run-json") << QStringList{"remove", "Fork", "--dry-run", "--json"};
        QTest::newRow("remove-fork-dry-run-claimed-json") << QStringList{"remove", "Fork", "--dry-run", "--include-claimed", "--json"};
        // Removed apps: groups, grades and evidence; the items of two groups in full.
        QTest::newRow("orphans") << QStringList{"orphans"};
        QTest::newRow("orphans-all") << QStringList{"orphans", "--all"};
        QTest::newRow("orphans-guest-json") << QStringList{"--root", "$ROOT", "--home", "$ROOT/Users/guest", "orphans", "--json"};
        QTest::newRow("remove-orphan-backup-json") << QStringList{"remove", "--orphan", "name:vanished backup", "--dry-run", "--json"};
        QTest::newRow("remove-orphan-scripted-json") << QStringList{"remove", "--orphan", "com.vanished.scripted", "--dry-run", "--json"};
        QTest::newRow("remove-orphan-wrong-case") << QStringList{"remove", "--orphan", "COM.VANISHED.WRITER", "--dry-run"};
    }
    void reference()
    {
        QFETCH(QStringList, arguments);
        check(QString::fromLatin1(QTest::currentDataTag()), arguments);
    }

    // Last, since it moves things: the app's items go to the Trash and come back byte for byte; a second
    // restore finds nothing left to put back.
    void removeAndRestore()
    {
        const QByteArray before = snapshot();
        QVERIFY(before.count('\n') > 500);
        QByteArray out;
        check(QStringLiteral("remove-zeta-tools-json"), {"remove", "Zeta Tools", "--yes", "--json"}, &out);
        const QStringList moved = TestSupport::jsonPaths(QJsonDocument::fromJson(out)[u"deleted"]);
        QVERIFY(moved.size() >= 3);
        QVERIFY(snapshot() != before);

        check(QStringLiteral("restore-zeta-tools-json"), QStringList{"restore"} + moved + QStringList{"--json"});
        QVERIFY(snapshot() == before);
        QCOMPARE(TestSupport::trashedCount(), 0);
        check(QStringLiteral("restore-again"), {"restore", moved.constFirst()});
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    CliReferenceTest test;
    return TestSupport::execWithPrivateTrash(&test, argc, argv);
}

#include "tst_cli_reference.moc"
