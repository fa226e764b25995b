// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <array>
#include <optional>

// The sound played when a Trash run moved something.
namespace SoundService {

// System sounds tried in this order; the first one found plays.
inline constexpr std::array<const char *, 4> soundNames{"Glass", "Pop", "Ping", "Hero"};

// Returns at once; the sound plays on its own. None found, or no audio output: the beep.
void playDeletionComplete();

// The file that would play: the first name found under the system's Sounds folder, as .aiff, .wav or .caf.
[[nodiscard]] std::optional<QString> completionSoundFile();

} // namespace SoundService
