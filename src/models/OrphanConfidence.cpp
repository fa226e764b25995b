// SPDX-License-Identifier: MIT
#include "models/OrphanConfidence.h"

#include <array>

namespace OrphanConfidences {

QString rawValue(OrphanConfidence confidence)
{
    switch (confidence) {
    case OrphanConfidence::high: return QStringLiteral("Likely removed app");
    case OrphanConfidence::medium: return QStringLiteral("Possible leftover");
    case OrphanConfidence::uncertain: return QStringLiteral("Uncertain match");
    }
    return QString();
}

std::optional<OrphanConfidence> fromRawValue(const QString &value)
{
    for (const OrphanConfidence confidence : {OrphanConfidence::high, OrphanConfidence::medium, OrphanConfidence::uncertain}) {
        if (rawValue(confidence) == value)
            return confidence;
    }
    return std::nullopt;
}

} // namespace OrphanConfidences
