// SPDX-License-Identifier: MIT
#include "platform/TextCompare.h"

#include <QCollator>

namespace TextCompare {

int localizedCaseInsensitiveCompare(const QString &a, const QString &b)
{
    // QCollator is not safe to share between threads; scans sort on worker threads.
    thread_local const QCollator collator = [] {
        QCollator c;
        c.setCaseSensitivity(Qt::CaseInsensitive);
        return c;
    }();
    return collator.compare(a, b);
}

} // namespace TextCompare
