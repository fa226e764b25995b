// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// NSSound's play() and beep().
namespace SoundPlayer {

// Starts playing the sound file on the application's thread and returns at once. False when it cannot
// start: no application object, no audio output, or a path a URL cannot carry.
[[nodiscard]] bool play(const QString &path);
// NSBeep on a Mac; elsewhere a short tone through the audio output when the program has a window, else
// the terminal bell.
void beep();

} // namespace SoundPlayer
