// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// A sound file, or the alert beep, played without blocking the caller.
namespace SoundPlayer {

// Starts playing the sound file on the application's thread and returns at once. False when it cannot
// start: no application object, no audio output, or a path a URL cannot carry.
[[nodiscard]] bool play(const QString &path);
// The system's alert sound on a Mac; elsewhere a short tone through the audio output when the program has a window, else
// the terminal bell.
void beep();

} // namespace SoundPlayer
