// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

// Fixture trees for tests: everything lives in a temporary folder, never in the real home.
namespace TestSupport {

// Creates the file (and its parent folders) with these bytes; fails the calling test on error.
void writeFile(const QString &path, const QByteArray &contents = QByteArray());
void makeFolder(const QString &path);
void makeSymlink(const QString &target, const QString &linkPath);

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

// True when the process runs with root's rights, so permission tests must drop them or skip.
[[nodiscard]] bool runningAsRoot();

} // namespace TestSupport
