// SPDX-License-Identifier: MIT
#include "platform/SoundPlayer.h"

#include "platform/MacPlatform.h"
#include "platform/NativePath.h"

#include <QAudioDevice>
#include <QAudioOutput>
#include <QAudioSink>
#include <QBuffer>
#include <QGuiApplication>
#include <QCoreApplication>
#include <QMediaDevices>
#include <QMediaPlayer>
#include <QUrl>

#include <cmath>
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

namespace {

// A short soft tone, the window's stand-in for the system alert sound.
QByteArray alertTone(const QAudioFormat &format)
{
    constexpr double frequency = 880.0;
    constexpr double seconds = 0.15;
    const int frames = int(format.sampleRate() * seconds);
    QByteArray samples(frames * format.bytesPerFrame(), Qt::Uninitialized);
    auto *out = reinterpret_cast<qint16 *>(samples.data());
    for (int frame = 0; frame < frames; ++frame) {
        // Fades out so the tone ends without a click.
        const double envelope = 1.0 - double(frame) / frames;
        const auto value = qint16(8000 * envelope * std::sin(2 * M_PI * frequency * frame / format.sampleRate()));
        for (int channel = 0; channel < format.channelCount(); ++channel)
            *out++ = value;
    }
    return samples;
}

bool playTone()
{
    auto *application = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    if (!application || QMediaDevices::audioOutputs().isEmpty())
        return false;
    QMetaObject::invokeMethod(application, [application] {
        const QAudioDevice device = QMediaDevices::defaultAudioOutput();
        QAudioFormat format;
        format.setSampleRate(44100);
        format.setChannelCount(1);
        format.setSampleFormat(QAudioFormat::Int16);
        if (!device.isFormatSupported(format))
            format.setChannelCount(2);
        auto *sink = new QAudioSink(device, format, application);
        auto *buffer = new QBuffer(sink);
        buffer->setData(alertTone(format));
        buffer->open(QIODevice::ReadOnly);
        QObject::connect(sink, &QAudioSink::stateChanged, sink, [sink](QAudio::State state) {
            if (state == QAudio::IdleState || state == QAudio::StoppedState)
                sink->deleteLater();
        });
        sink->start(buffer);
    }, Qt::QueuedConnection);
    return true;
}

void terminalBell()
{
    // The controlling terminal, not stdout or stderr: a bell byte must never land in piped output.
    const int terminal = ::open("/dev/tty", O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (terminal < 0)
        return;
    [[maybe_unused]] const ssize_t written = ::write(terminal, "\a", 1);
    ::close(terminal);
}

} // namespace

void beep()
{
    // The system's own alert sound where there is one; Qt's only beep is QApplication::beep() in Qt Widgets
    // (https://doc.qt.io/qt-6/qapplication.html#beep), which the core library does not link.
    if (MacPlatform::beep())
        return;
    if (!playTone())
        terminalBell();
}

} // namespace SoundPlayer
