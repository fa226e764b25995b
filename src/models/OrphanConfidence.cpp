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

QString key(OrphanConfidence confidence)
{
    switch (confidence) {
    case OrphanConfidence::high: return QStringLiteral("high");
    case OrphanConfidence::medium: return QStringLiteral("medium");
    case OrphanConfidence::uncertain: return QStringLiteral("uncertain");
    }
    return QString();
}

QString shortLabel(OrphanConfidence confidence)
{
    switch (confidence) {
    case OrphanConfidence::high: return QStringLiteral("High");
    case OrphanConfidence::medium: return QStringLiteral("Med");
    case OrphanConfidence::uncertain: return QStringLiteral("Low");
    }
    return QString();
}

} // namespace OrphanConfidences
