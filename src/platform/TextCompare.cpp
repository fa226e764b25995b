// SPDX-License-Identifier: MIT
#include "platform/TextCompare.h"

#include <QCollator>
#include <QTextBoundaryFinder>

namespace TextCompare {

int localizedCaseInsensitiveCompare(const QString &a, const QString &b)
{
    // QCollator is not safe to share between threads; scans sort on worker threads.
    thread_local const QCollator collator = [] {
        // Under the C locale QCollator falls back to comparing code points, which sorts "Äpfel" after
        // "Zeta"; a Mac never runs without a language, so use English there.
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
