// SPDX-License-Identifier: MIT
#pragma once

#include "models/InstalledApp.h"

#include <QList>

namespace AppDiscoveryService {

// Every ".app" at the top level of /Applications and ~/Applications, sized, sorted by name.
// Blocking: it sizes every bundle, so call it off the main thread.
[[nodiscard]] QList<InstalledApp> discoverInstalledApps();

} // namespace AppDiscoveryService
