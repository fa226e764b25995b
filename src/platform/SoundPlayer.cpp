// SPDX-License-Identifier: MIT
#include "platform/SoundPlayer.h"

#include "platform/NativePath.h"

#include <QAudioDevice>
#include <QAudioOutput>
#include <QCoreApplication>
#include <QMediaDevices>
#include <QMediaPlayer>
#include <QUrl>

#include <fcntl.h>
#include <unistd.h>

namespace SoundPlayer {

bool play(const QString &path)
{
    QCoreApplication *application = QCoreApplication::instance();
    // A name that is not UTF-8 cannot travel in a URL; the caller falls back to the beep.
    if (!application || NativePath::encode(path) != path.toUtf8() || QMediaDevices::audioOutputs().isEmpty())
        return false;
    // The player needs the event loop of the application's thread; it deletes itself when done.
    QMetaObject::invokeMethod(application, [application, path] {
        auto *player = new QMediaPlayer(application);
        player->setAudioOutput(new QAudioOutput(player));
        QObject::connect(player, &QMediaPlayer::mediaStatusChanged, player, [player](QMediaPlayer::MediaStatus status) {
            if (status == QMediaPlayer::EndOfMedia || status == QMediaPlayer::InvalidMedia)
                player->deleteLater();
        });
        QObject::connect(player, &QMediaPlayer::errorOccurred, player, &QObject::deleteLater);
        player->setSource(QUrl::fromLocalFile(path));
        player->play();
    }, Qt::QueuedConnection);
    return true;
}

void beep()
{
    // The controlling terminal, not stdout or stderr: a bell byte must never land in piped output.
    const int terminal = ::open("/dev/tty", O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0)
        return;
    [[maybe_unused]] const ssize_t written = ::write(terminal, "\a", 1);
    ::close(terminal);
}

} // namespace SoundPlayer
