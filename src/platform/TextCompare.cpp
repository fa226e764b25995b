// SPDX-License-Identifier: MIT
#include "platform/TextCompare.h"

#include <QCollator>
#include <QTextBoundaryFinder>

namespace TextCompare {

int localizedCaseInsensitiveCompare(const QString &a, const QString &b)
{
    // QCollator is reentrant, not thread-safe (https://doc.qt.io/qt-6/qcollator.html), and scans sort on
    // worker threads: one per thread.
    thread_local const QCollator collator = [] {
        // Since the fix for https://bugreports.qt.io/browse/QTBUG-58621 QCollator compares code points
        // under the C locale, which sorts "Äpfel" after "Zeta"; a Mac never runs without a language, so
        // use English there.
        const QLocale locale; // the application's default, which follows the system's
        QCollator c(locale.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedStates) : locale);
        c.setCaseSensitivity(Qt::CaseInsensitive);
        return c;
    }();
    return collator.compare(a, b);
}

qsizetype characterCount(const QString &text)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype count = 0;
    while (finder.toNextBoundary() != -1)
        ++count;
    return count;
}

} // namespace TextCompare
