// SPDX-License-Identifier: MIT
// Times FileSizeCalculator::directorySize (no entry limit) on a generated tree of over 200,000 entries
// against `du -s --apparent-size -B1` and a plain single-thread readdir + fstatat walk (the floor).
// Warm cache, best of five each. Prints the figures and the two ratios.
#include "services/FileSizeCalculator.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

qint64 entries = 0;

void makeDir(const std::string &path)
{
    if (::mkdir(path.c_str(), 0755) != 0) {
        std::perror(path.c_str());
        std::exit(1);
    }
    ++entries;
}

// Logical size without writing the bytes: the walk reads sizes, never contents.
void makeFile(const std::string &path, off_t size)
{
    const int fd = ::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
    if (fd < 0 || ::ftruncate(fd, size) != 0) {
        std::perror(path.c_str());
        std::exit(1);
    }
    ::close(fd);
    ++entries;
}

void generate(const std::string &root)
{
    std::mt19937 random(42);
    std::uniform_int_distribution<off_t> size(0, 64 * 1024);
    for (int top = 0; top < 100; ++top) {
        const std::string folder = root + "/Folder " + std::to_string(top);
        makeDir(folder);
        for (int sub = 0; sub < 20; ++sub) {
            const std::string inner = folder + "/sub" + std::to_string(sub);
            makeDir(inner);
            for (int file = 0; file < 95; ++file)
                makeFile(inner + "/file" + std::to_string(file) + ".dat", size(random));
            makeFile(inner + "/.DS_Store", 6148);
        }
        // A package: counted as one entry, never entered.
        const std::string app = folder + "/Tool " + std::to_string(top) + ".app";
        makeDir(app);
        makeDir(app + "/Contents");
        makeDir(app + "/Contents/Resources");
        for (int file = 0; file < 100; ++file)
            makeFile(app + "/Contents/Resources/r" + std::to_string(file), size(random));
        // Hidden folders: neither counted nor entered.
        const std::string hidden = folder + "/.cache";
        makeDir(hidden);
        for (int file = 0; file < 50; ++file)
            makeFile(hidden + "/c" + std::to_string(file), size(random));
    }
}

// The floor: every entry read and stat'ed relative to its folder, one thread, no filtering.
qint64 floorWalk(int fd)
{
    DIR *dir = ::fdopendir(fd);
    if (!dir) {
        ::close(fd);
        return 0;
    }
    qint64 total = 0;
    while (const dirent *entry = ::readdir(dir)) {
        const char *name = entry->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
            continue;
        struct stat st;
        if (::fstatat(::dirfd(dir), name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        if (S_ISREG(st.st_mode)) {
            total += st.st_size;
        } else if (S_ISDIR(st.st_mode)) {
            const int child = ::openat(::dirfd(dir), name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (child >= 0)
                total += floorWalk(child);
        }
    }
    ::closedir(dir);
    return total;
}

// Best of five wall-clock runs, in milliseconds; result receives the last run's value.
double bestOfFive(const std::function<qint64()> &run, qint64 &result)
{
    double best = std::numeric_limits<double>::max();
    result = run(); // warms the cache
    for (int round = 0; round < 5; ++round) {
        QElapsedTimer timer;
        timer.start();
        result = run();
        best = std::min(best, double(timer.nsecsElapsed()) / 1e6);
    }
    return best;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QTemporaryDir folder(QStringLiteral("/tmp/kestrune-size-walk-XXXXXX"));
    if (!folder.isValid()) {
        std::fprintf(stderr, "cannot create a temporary folder\n");
        return 1;
    }
    const std::string root = folder.path().toStdString();
    QElapsedTimer generation;
    generation.start();
    generate(root);
    std::printf("tree: %lld entries in %s (generated in %.1f s)\n", entries, root.c_str(), generation.elapsed() / 1000.0);

    qint64 ours = 0, du = 0, floor = 0;
    const double oursMs = bestOfFive([&] { return FileSizeCalculator::directorySize(folder.path(), std::numeric_limits<qint64>::max()); }, ours);
    const double duMs = bestOfFive([&] {
        QProcess process;
        process.start(QStringLiteral("du"), {QStringLiteral("-s"), QStringLiteral("--apparent-size"), QStringLiteral("-B1"), folder.path()});
        process.waitForFinished(-1);
        return process.readAllStandardOutput().split('\t').constFirst().toLongLong();
    }, du);
    const double floorMs = bestOfFive([&] { return floorWalk(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)); }, floor);

    // The byte totals differ on purpose: du and the floor also count hidden files and package contents.
    std::printf("directorySize: %.1f ms (%lld bytes)\n", oursMs, ours);
    std::printf("du:            %.1f ms (%lld bytes)\n", duMs, du);
    std::printf("floor:         %.1f ms (%lld bytes)\n", floorMs, floor);
    std::printf("ratio_vs_du %.2f\n", oursMs / duMs);
    std::printf("ratio_vs_floor %.2f\n", oursMs / floorMs);
    return 0;
}
