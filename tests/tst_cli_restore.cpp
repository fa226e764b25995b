// SPDX-License-Identifier: MIT
// `kestrune-cli restore` against a sample Mac whose items went to a Trash in the test's sandbox:
// everything comes back byte for byte, and nothing that took an item's place is overwritten.
#include "TestSupport.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <filesystem>
#include <fstream>
#include <map>

using TestSupport::jsonPaths;
using TestSupport::Run;

namespace {

// Every entry under folder: its kind, and a file's bytes or a link's target.
std::map<std::string, std::string> snapshot(const QString &folder)
{
    namespace fs = std::filesystem;
    std::map<std::string, std::string> entries;
    const fs::path root = QFile::encodeName(folder).toStdString();
    // Error codes throughout: the sample holds a link loop, which must be read, not followed.
    std::error_code error;
    for (auto it = fs::recursive_directory_iterator(root, error); !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
        const fs::path relative = it->path().lexically_relative(root);
        std::error_code ignored;
        const fs::file_status status = fs::symlink_status(it->path(), ignored);
        if (fs::is_symlink(status)) {
            entries[relative.native()] = "link " + fs::read_symlink(it->path(), ignored).native();
        } else if (fs::is_directory(status)) {
            entries[relative.native()] = "folder";
        } else {
            std::ifstream in(it->path(), std::ios::binary);
            const std::string bytes((std::istreambuf_iterator<char>(in)), {});
            entries[relative.native()] = "file " + QCryptographicHash::hash(QByteArray::fromStdString(bytes), QCryptographicHash::Sha256).toHex().toStdString();
        }
    }
    return entries;
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
        const auto before = snapshot(m_root);
        QVERIFY(before.size() > 500);
        const QStringList moved = removeAnApp();
        QVERIFY(moved.size() >= 3);
        QVERIFY(snapshot(m_root).size() < before.size());

        const Run restored = cli(QStringList{"restore"} + moved + QStringList{"--json"});
        QCOMPARE(restored.exitCode, 0);
        const QJsonObject report = QJsonDocument::fromJson(restored.out).object();
        QCOMPARE(report.keys(), (QStringList{"failed", "restored"}));
        QStringList back = jsonPaths(report[u"restored"]);
        back.sort();
        QStringList expected = moved;
        expected.sort();
        QCOMPARE(back, expected);
        QVERIFY(snapshot(m_root) == before);
        QVERIFY(TestSupport::trashedIn(TestSupport::homeTrash()).isEmpty());

        // Nothing left to put back: each path is reported, exit 1.
        const Run again = cli({"restore", moved.first(), "--json"});
        QCOMPARE(again.exitCode, 1);
        QCOMPARE(jsonPaths(QJsonDocument::fromJson(again.out)[u"failed"]), QStringList{moved.first()});
    }

    // A file that took an item's place stays; the item stays in the Trash; the rest comes back.
    void takenPlaceIsKept()
    {
        const QStringList moved = removeAnApp();
        QVERIFY(moved.size() >= 3);
        // An item that held none of the others and whose folder is still there.
        const auto found = std::find_if(moved.cbegin(), moved.cend(), [&moved](const QString &path) {
            return QFileInfo(QFileInfo(path).path()).isDir()
                && std::none_of(moved.cbegin(), moved.cend(), [&path](const QString &other) { return other.startsWith(path + '/'); });
        });
        QVERIFY(found != moved.cend());
        const QString taken = *found;
        TestSupport::writeFile(taken, "someone else's");
        const Run restored = cli(QStringList{"restore"} + moved);
        QCOMPARE(restored.exitCode, 1);
        QVERIFY2(restored.out.contains("FAILED") && restored.err.contains("1 item could not be put back"), restored.out.constData());
        QCOMPARE(TestSupport::readBytes(taken), QByteArray("someone else's"));
        QCOMPARE(TestSupport::trashedIn(TestSupport::homeTrash()).size(), 1);
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    CliRestoreTest test;
    return TestSupport::execWithPrivateTrash(&test, argc, argv);
}

#include "tst_cli_restore.moc"
