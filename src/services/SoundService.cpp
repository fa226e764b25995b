// SPDX-License-Identifier: MIT
#include "services/SoundService.h"

#include "platform/FileSystem.h"
#include "platform/FileSystemLayout.h"
#include "platform/SoundPlayer.h"

namespace SoundService {

std::optional<QString> completionSoundFile()
{
    const QString folder = FileSystemLayout::systemPath(QStringLiteral("/System/Library/Sounds"));
    for (const char *name : soundNames) {
        for (const char *extension : {"aiff", "wav", "caf"}) {
            const QString path = QStringLiteral("%1/%2.%3").arg(folder, QLatin1String(name), QLatin1String(extension));
            bool isDirectory = false;
            // An empty file cannot load, so it counts as missing.
            if (FileSystem::exists(path, &isDirectory) && !isDirectory && FileSystem::fileSize(path).value_or(0) > 0)
                return path;
        }
    }
    return std::nullopt;
}

void playDeletionComplete()
{
    const std::optional<QString> file = completionSoundFile();
    if (!file || !SoundPlayer::play(*file))
        SoundPlayer::beep();
}

} // namespace SoundService
