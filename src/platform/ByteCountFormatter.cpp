// SPDX-License-Identifier: MIT
#include "platform/ByteCountFormatter.h"

#include <array>
#include <cmath>

namespace ByteCountFormatter {

QString string(qint64 byteCount)
{
    if (byteCount == 0)
        return QStringLiteral("Zero KB");
    const QString sign = byteCount < 0 ? QStringLiteral("-") : QString();
    // Through double so that the magnitude of the smallest qint64 does not overflow.
    const double magnitude = std::fabs(double(byteCount));
    if (magnitude < 1000) {
        const qint64 n = qint64(magnitude);
        return sign + QString::number(n) + (n == 1 ? QStringLiteral(" byte") : QStringLiteral(" bytes"));
    }

    struct Unit {
        const char *name;
        int decimals;
    };
    static constexpr std::array<Unit, 6> units = {
        {{"KB", 0}, {"MB", 1}, {"GB", 2}, {"TB", 2}, {"PB", 2}, {"EB", 2}}};
    double value = magnitude / 1000.0;
    std::size_t index = 0;
    for (;;) {
        const double scale = std::pow(10.0, units[index].decimals);
        const double rounded = std::round(value * scale) / scale;
        // 999,999 bytes rounds to 1,000 KB, which the Mac shows as "1 MB".
        if (rounded >= 1000.0 && index + 1 < units.size()) {
            value /= 1000.0;
            ++index;
            continue;
        }
        QString text = QString::number(rounded, 'f', units[index].decimals);
        if (text.contains(QLatin1Char('.'))) {
            while (text.endsWith(QLatin1Char('0')))
                text.chop(1);
            if (text.endsWith(QLatin1Char('.')))
                text.chop(1);
        }
        return sign + text + QLatin1Char(' ') + QLatin1String(units[index].name);
    }
}

} // namespace ByteCountFormatter
