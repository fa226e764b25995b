// SPDX-License-Identifier: MIT
#include "models/OrphanConfidence.h"

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

} // namespace OrphanConfidences
