// SPDX-License-Identifier: MIT
#include "platform/UrlOpener.h"

#include <QDesktopServices>

void UrlOpener::open(const QUrl &url)
{
    QDesktopServices::openUrl(url);
}
