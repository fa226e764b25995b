// SPDX-License-Identifier: MIT
#include "platform/ByteCountFormatter.h"

#include <array>

namespace ByteCountFormatter {

QString string(qint64 byteCount)
{
    if (byteCount == 0)
        return QStringLiteral("Zero KB");
    const QString sign = byteCount < 0 ? QStringLiteral("-") : QString();
    // Unsigned magnitude so that the smallest qint64 does not overflow; integer arithmetic so that
    // 1,450,000 bytes is exactly 1.45 MB and rounds the same way every time.
    const quint64 magnitude = byteCount < 0 ? quint64(0) - quint64(byteCount) : quint64(byteCount);
    if (magnitude < 1000)
        return sign + QString::number(magnitude) + (magnitude == 1 ? QStringLiteral(" byte") : QStringLiteral(" bytes"));

    struct Unit {
        const char *name;
        int decimals;
        quint64 bytes;
    };
    static constexpr std::array<Unit, 6> units = {{{"KB", 0, 1000ULL},
                                                   {"MB", 1, 1000ULL * 1000},
                                                   {"GB", 2, 1000ULL * 1000 * 1000},
                                                   {"TB", 2, 1000ULL * 1000 * 1000 * 1000},
                                                   {"PB", 2, 1000ULL * 1000 * 1000 * 1000 * 1000},
                                                   {"EB", 2, 1000ULL * 1000 * 1000 * 1000 * 1000 * 1000}}};
    for (std::size_t index = 0; index < units.size(); ++index) {
        const Unit &unit = units[index];
        const quint64 scale = unit.decimals == 0 ? 1 : unit.decimals == 1 ? 10 : 100;
        const quint64 step = unit.bytes / scale; // bytes per last shown digit
        // Half rounds up; 999,500 bytes becomes 1,000 KB, which is shown as "1 MB".
        const quint64 rounded = magnitude / step + (magnitude % step * 2 >= step ? 1 : 0);
        if (rounded >= 1000 * scale && index + 1 < units.size())
            continue;
        QString text = QString::number(rounded / scale);
        quint64 fraction = rounded % scale;
        int digits = unit.decimals;
        while (digits > 0 && fraction % 10 == 0) {
            fraction /= 10;
            --digits;
        }
        if (digits > 0)
            text += QLatin1Char('.') + QString::number(fraction).rightJustified(digits, QLatin1Char('0'));
        return sign + text + QLatin1Char(' ') + QLatin1String(unit.name);
    }
    return QString();
}

} // namespace ByteCountFormatter
