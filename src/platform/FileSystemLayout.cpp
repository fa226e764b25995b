// SPDX-License-Identifier: MIT
#include "platform/FileSystemLayout.h"

#include <QDir>
#include <QMutex>

namespace {

struct Layout {
    QMutex mutex;
    QString rootPrefix;
    QString home = QDir::homePath();
};

Layout &layout()
{
    static Layout instance;
    return instance;
}

QString withoutTrailingSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}

} // namespace

namespace FileSystemLayout {

void setRoot(const QString &root)
{
    QString prefix = withoutTrailingSlash(QDir::cleanPath(QDir(root).absolutePath()));
    if (prefix == QLatin1String("/"))
        prefix.clear();
    QMutexLocker lock(&layout().mutex);
    layout().rootPrefix = prefix;
}

void setHome(const QString &home)
{
    const QString cleaned = withoutTrailingSlash(QDir::cleanPath(QDir(home).absolutePath()));
    QMutexLocker lock(&layout().mutex);
    layout().home = cleaned;
}

QString rootPrefix()
{
    QMutexLocker lock(&layout().mutex);
    return layout().rootPrefix;
}

QString home()
{
    QMutexLocker lock(&layout().mutex);
    return layout().home;
}

QString systemPath(const QString &absolutePath)
{
    return rootPrefix() + absolutePath;
}

QString homePath(const QString &relativeToHome)
{
    return home() + relativeToHome;
}

} // namespace FileSystemLayout
