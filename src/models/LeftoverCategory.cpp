// SPDX-License-Identifier: MIT
#include "models/LeftoverCategory.h"

namespace LeftoverCategories {

QString rawValue(LeftoverCategory category)
{
    switch (category) {
    case LeftoverCategory::application: return QStringLiteral("Application");
    case LeftoverCategory::applicationSupport: return QStringLiteral("Application Support");
    case LeftoverCategory::caches: return QStringLiteral("Caches");
    case LeftoverCategory::preferences: return QStringLiteral("Preferences");
    case LeftoverCategory::containers: return QStringLiteral("Containers");
    case LeftoverCategory::groupContainers: return QStringLiteral("Group Containers");
    case LeftoverCategory::logs: return QStringLiteral("Logs");
    case LeftoverCategory::savedState: return QStringLiteral("Saved Application State");
    case LeftoverCategory::webKit: return QStringLiteral("WebKit");
    case LeftoverCategory::httpStorages: return QStringLiteral("HTTP Storages");
    case LeftoverCategory::launchAgents: return QStringLiteral("Launch Agents");
    case LeftoverCategory::launchDaemons: return QStringLiteral("Launch Daemons");
    case LeftoverCategory::privilegedHelperTools: return QStringLiteral("Privileged Helper Tools");
    case LeftoverCategory::plugins: return QStringLiteral("Plugins & Extensions");
    case LeftoverCategory::preferencePanes: return QStringLiteral("Preference Panes");
    case LeftoverCategory::other: return QStringLiteral("Other Related Files");
    }
    return QString();
}

std::optional<LeftoverCategory> fromRawValue(const QString &value)
{
    for (const LeftoverCategory category : allCases) {
        if (rawValue(category) == value)
            return category;
    }
    return std::nullopt;
}

} // namespace LeftoverCategories
