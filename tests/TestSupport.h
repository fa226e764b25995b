// SPDX-License-Identifier: MIT
#pragma once

#include "models/LeftoverItem.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <utility>

class QObject;

// Fixture trees for tests: everything lives in a temporary folder, never in the real home.
namespace TestSupport {

// Creates the file (and its parent folders) with these bytes; fails the calling test on error. Names
// that NativePath decoded from bytes that are not UTF-8 are written as those bytes.
void writeFile(const QString &path, const QByteArray &contents = QByteArray());
void makeFolder(const QString &path);
void makeSymlink(const QString &target, const QString &linkPath);

// An XML property list holding one dictionary of string values.
[[nodiscard]] QByteArray infoPlist(const QList<std::pair<QString, QString>> &strings);
// A bundle folder: Contents/Info.plist with the name (and the identifier unless it is empty) and an
// executable of payload bytes.
void writeApp(const QString &bundle, const QString &name, const QString &identifier = QString(), int payload = 0);

// A folder of its own for the running test function and data row, under dir.
[[nodiscard]] QString caseFolder(const QTemporaryDir &dir);

// Removes the folder byte for byte when the test process ends: QTemporaryDir cannot delete names that
// are not UTF-8. generateSampleMac does this for its folder.
void sweepOnExit(const QString &folder);

// A sample Mac written by the generator into folder: root is folder, home is folder/Users/ann.
// Returns false (with the generator's output in *log) when the generator failed.
[[nodiscard]] bool generateSampleMac(const QString &folder, int seed = 1, const QString &scale = QStringLiteral("small"),
                                     QString *log = nullptr);
[[nodiscard]] inline QString sampleHome(const QString &folder) { return folder + QStringLiteral("/Users/ann"); }

// Points the file-system layout at a root and home for the rest of the test.
void useLayout(const QString &root, const QString &home);
// Creates root/Users/ann/Library and points the layout at root and that home, which it returns.
QString useSampleLayout(const QString &root);

// True when the process runs with root's rights, so permission tests must drop them or skip.
[[nodiscard]] bool runningAsRoot();
// True when an unprivileged run really lacks root's rights: not root, or root with setpriv at hand.
[[nodiscard]] bool canRunUnprivileged();

// A finished program; exitCode is -1 when it could not start, crashed or ran out of time.
struct Run { int exitCode = -1; QByteArray out; QByteArray err; };
// As root with unprivileged set, the program runs as nobody through setpriv.
[[nodiscard]] Run runProgram(const QString &program, const QStringList &arguments, bool unprivileged = false);
// The built kestrune-cli.
[[nodiscard]] Run runCli(const QStringList &arguments, bool unprivileged = false);
// The built kestrune-cli on a sample Mac: --root root --home home, then the arguments.
[[nodiscard]] Run runCliOn(const QString &root, const QString &home, const QStringList &arguments, bool unprivileged = false);
// Paths of a JSON list of items, or of failures through their "item", as the command line reports them.
[[nodiscard]] QStringList jsonPaths(const QJsonValue &items);
[[nodiscard]] QStringList pathsOf(const QList<LeftoverItem> &items);

// A temporary folder under /tmp that an unprivileged user can reach (mode 0755).
struct SharedTemporaryDir : QTemporaryDir {
    SharedTemporaryDir();
};

// This test program again, as nobody when unprivileged; KESTRUNE_TEST_MAIN_WITH_CHILD hands the
// arguments (decoded as NativePath does) to its child function.
[[nodiscard]] Run runChild(const QStringList &arguments, bool unprivileged = false);
[[nodiscard]] QStringList childArguments(int argc, char *argv[]);

// The Trash that GIO uses for this process (XDG_DATA_HOME/Trash), and how many records it holds.
[[nodiscard]] QString homeTrash();
[[nodiscard]] qsizetype trashedCount();
// A file's bytes read with POSIX calls (names that are not UTF-8 included); "<unreadable>" on failure.
[[nodiscard]] QByteArray readBytes(const QString &path);

// Runs the test object with HOME and XDG_DATA_HOME (on a Mac also CFFIXED_USER_HOME, whose .Trash the
// platform Trash then uses) in a private temporary folder, set before the first item is trashed, so
// that nothing reaches the real Trash. Call from main after QCoreApplication.
int execWithPrivateTrash(QObject *test, int argc, char *argv[]);

} // namespace TestSupport

// main for a test that runs part of itself in another process (runChild); the tests themselves run
// with a private Trash.
#define KESTRUNE_TEST_MAIN_WITH_CHILD(TestClass, child)                                                         \
    int main(int argc, char *argv[])                                                                           \
    {                                                                                                          \
        if (argc > 1 && qstrcmp(argv[1], "--child") == 0)                                                      \
            return child(TestSupport::childArguments(argc, argv));                                             \
        QCoreApplication application(argc, argv);                                                              \
        TestClass test;                                                                                        \
        return TestSupport::execWithPrivateTrash(&test, argc, argv);                                           \
    }
