// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>

// Hands an address to the system's default browser or handler.
namespace UrlOpener {

// The outcome is not reported: a failed open is not the caller's concern.
void open(const QUrl &url);

} // namespace UrlOpener
