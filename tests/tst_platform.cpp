// SPDX-License-Identifier: MIT
// The stand-ins for the Mac's platform that need no sample Mac: sizes as text, native paths, path
// helpers, collation, and running a helper program.
#include "platform/ByteCountFormatter.h"
#include "platform/CommandRunner.h"
#include "platform/FileSystem.h"
#include "platform/NativePath.h"
#include "platform/TextCompare.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTest>

#include <limits>

namespace {

std::optional<QString> shell(const QString &script, int timeoutMs = -1)
{
    return CommandRunner::run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}, timeoutMs);
}

} // namespace

class PlatformTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Orders below are those of the C locale's stand-in, whatever language the machine runs in.
    void initTestCase() { QLocale::setDefault(QLocale::c()); }

    // Singular, the carry of 999,500 bytes into "1 MB", an inner zero kept, and both ends of the range.
    void byteCount()
    {
        const std::pair<qint64, const char *> cases[] = {{0, "Zero KB"}, {1, "1 byte"}, {999, "999 bytes"}, {999500, "1 MB"}, {2050000000, "2.05 GB"},
                                                         {std::numeric_limits<qint64>::max(), "9.22 EB"}, {std::numeric_limits<qint64>::min(), "-9.22 EB"}};
        for (const auto &[bytes, text] : cases)
            QCOMPARE(ByteCountFormatter::string(bytes), QString::fromLatin1(text));
    }

    // Bytes that are not UTF-8, encoded surrogates among them, become U+DC00 plus the byte; a real
    // character whose low surrogate lies in that range stays text. Any bytes but NUL come back as they were.
    void nativePath()
    {
        const std::pair<QByteArray, QString> cases[] = {{"Caf\xe9", QStringView(u"Caf\xdce9").toString()},
                                                        {"\xed\xa0\x80", QStringView(u"\xdced\xdca0\xdc80").toString()},
                                                        {"\xf0\x90\x82\x80\x80", QStringView(u"\xd800\xdc80\xdc80").toString()}};
        for (const auto &[bytes, text] : cases) {
            QCOMPARE(NativePath::decode(bytes), text);
            QCOMPARE(NativePath::encode(text), bytes);
        }
        QRandomGenerator random(20261123);
        for (int round = 0; round < 2000; ++round) {
            QByteArray bytes(random.bounded(1, 40), Qt::Uninitialized);
            // Biased towards bytes >= 0x80 to hit the escapes.
            for (char &c : bytes)
                c = char(random.bounded(2) ? random.bounded(0x80, 0x100) : random.bounded(1, 0x80));
            QCOMPARE(NativePath::encode(NativePath::decode(bytes)), bytes);
        }
    }

    // Last component, parent, extension, without extension, bare name.
    void pathHelpers()
    {
        const std::pair<QString, QStringList> cases[] = {
            {"/Applications/Foo.app/", {"Foo.app", "/Applications", "app", "/Applications/Foo", "Foo"}},
            {"/A/x.tar.gz", {"x.tar.gz", "/A", "gz", "/A/x.tar", "x.tar"}},
            {"/A/.app", {".app", "/A", "", "/A/.app", ".app"}},
            {"/A.b/Foo", {"Foo", "/A.b", "", "/A.b/Foo", "Foo"}},
            {"/Users", {"Users", "/", "", "/Users", "Users"}}};
        for (const auto &[path, expected] : cases)
            QCOMPARE((QStringList{FileSystem::lastPathComponent(path), FileSystem::deletingLastPathComponent(path), FileSystem::pathExtension(path),
                                  FileSystem::deletingPathExtension(path), FileSystem::fileNameWithoutExtension(path)}),
                     expected);
    }

    // Both overloads, any letter case, and no near miss.
    void packageExtensions()
    {
        QStringList accepted;
        for (const QString &extension : {"app", "PREFPANE", "Xpc", "", "framework", "ap", "apps", "plist"}) {
            const QByteArray latin = extension.toLatin1();
            if (FileSystem::isPackageExtension(QStringView(extension)) && FileSystem::isPackageExtension(QLatin1StringView(latin)))
                accepted.append(extension);
        }
        QCOMPARE(accepted, (QStringList{"app", "PREFPANE", "Xpc"}));
    }

    void collation()
    {
        QStringList names{QStringLiteral("zeta"), QStringLiteral("Alpha"), QStringLiteral("beta"), QStringLiteral("Äpfel")};
        std::stable_sort(names.begin(), names.end(), TextCompare::localizedCaseInsensitiveLess);
        QCOMPARE(names, (QStringList{QStringLiteral("Alpha"), QStringLiteral("Äpfel"), QStringLiteral("beta"), QStringLiteral("zeta")}));
        QVERIFY(TextCompare::localizedCaseInsensitiveCompare(QStringLiteral("App 10"), QStringLiteral("App 9")) < 0);
    }

    // Arguments reach the program intact and its output arrives as UTF-8 text, up to the cap; a missing
    // program, a failed or killed one, output that is not UTF-8 or one byte too much is no answer.
    void commandOutput()
    {
        const QString query = QStringLiteral("kMDItemCFBundleIdentifier == 'com.example.Ünï'");
        QCOMPARE(CommandRunner::run(QStringLiteral("/bin/printf"), {QStringLiteral("%s\\n"), query}), std::optional<QString>(query + QLatin1Char('\n')));
        const QString bytes = QStringLiteral("head -c %1 /dev/zero | tr '\\0' a");
        QCOMPARE(shell(bytes.arg(CommandRunner::outputLimit)).value_or(QString()).size(), CommandRunner::outputLimit);
        QCOMPARE(shell(bytes.arg(CommandRunner::outputLimit + 1)), std::nullopt);
        QCOMPARE(CommandRunner::run(QStringLiteral("/nonexistent/mdfind"), {}), std::nullopt);
        for (const char *script : {"echo found; exit 3", "echo found; kill -9 $$", "printf '/tmp/\\377\\n'"})
            QVERIFY2(!shell(QString::fromLatin1(script)), script);
    }

    // Far beyond any pipe buffer, on both channels, with the result printed last.
    void standardErrorFloodDoesNotBlock()
    {
        const auto output = shell(QStringLiteral("head -c 30000000 /dev/zero >&2; head -c 300000 /dev/zero | tr '\\0' b; echo done"), 60000);
        QVERIFY(output && output->endsWith(QStringLiteral("bdone\n")));
    }

    void commandTimeout()
    {
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(shell(QStringLiteral("echo early; sleep 30"), 300), std::nullopt);
        // Closing its output does not end the wait: the exit does.
        QCOMPARE(shell(QStringLiteral("exec >&-; sleep 30"), 300), std::nullopt);
        QVERIFY(timer.elapsed() < 10000);
    }
};

QTEST_GUILESS_MAIN(PlatformTest)
#include "tst_platform.moc"
