// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <array>
#include <optional>

// The kind of place a leftover was found in. Declaration order is display order.
enum class LeftoverCategory {
    application,
    applicationSupport,
    caches,
    preferences,
    containers,
    groupContainers,
    logs,
    savedState,
    webKit,
    httpStorages,
    launchAgents,
    launchDaemons,
    privilegedHelperTools,
    plugins,
    preferencePanes,
    other,
};

namespace LeftoverCategories {

inline constexpr std::array<LeftoverCategory, 16> allCases = {
    LeftoverCategory::application, LeftoverCategory::applicationSupport, LeftoverCategory::caches,
    LeftoverCategory::preferences, LeftoverCategory::containers, LeftoverCategory::groupContainers,
    LeftoverCategory::logs, LeftoverCategory::savedState, LeftoverCategory::webKit,
    LeftoverCategory::httpStorages, LeftoverCategory::launchAgents, LeftoverCategory::launchDaemons,
    LeftoverCategory::privilegedHelperTools, LeftoverCategory::plugins, LeftoverCategory::preferencePanes,
    LeftoverCategory::other};

// The section title, which is also the category's identity.
[[nodiscard]] QString rawValue(LeftoverCategory category);
[[nodiscard]] std::optional<LeftoverCategory> fromRawValue(const QString &rawValue);
// Locations that belong to the system rather than the user.
[[nodiscard]] constexpr bool systemLevel(LeftoverCategory category)
{
    return category == LeftoverCategory::launchDaemons || category == LeftoverCategory::privilegedHelperTools;
}

} // namespace LeftoverCategories
