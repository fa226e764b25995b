// SPDX-License-Identifier: MIT
#include "cli/CliSupport.h"
#include "cli/Commands.h"

namespace Commands {

int checkUpdate(const QStringList &arguments)
{
    Q_UNUSED(arguments)
    CliSupport::printError(QStringLiteral("kestrune-cli: this command is not available yet"));
    return 1;
}
} // namespace Commands
