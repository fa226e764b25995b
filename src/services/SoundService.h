// SPDX-License-Identifier: MIT
#pragma once

// The sound played when a Trash run moved something.
namespace SoundService {

// Returns at once; the sound plays on its own.
void playDeletionComplete();

} // namespace SoundService
