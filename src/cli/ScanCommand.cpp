// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"

namespace Commands {

int scan(const QStringList &arguments)
{
    Q_UNUSED(arguments)
    CliSupport::printError(QStringLiteral("kestrune-cli: this command is not available yet"));
    return 1;
}

std::optional<InstalledApp> resolveApp(const QString &target, QString *error)
{
    Q_UNUSED(target)
    *error = QStringLiteral("not available yet");
    return std::nullopt;
}

} // namespace Commands
