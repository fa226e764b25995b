// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"

namespace Commands {

int orphans(const QStringList &arguments)
{
    Q_UNUSED(arguments)
    CliSupport::printError(QStringLiteral("kestrune-cli: this command is not available yet"));
    return 1;
}

std::optional<OrphanedAppGroup> findOrphanGroup(const QString &id, QString *error)
{
    Q_UNUSED(id)
    *error = QStringLiteral("not available yet");
    return std::nullopt;
}

} // namespace Commands
