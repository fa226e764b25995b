// SPDX-License-Identifier: MIT
#include "services/SoundService.h"

namespace SoundService {

void playDeletionComplete()
{
}

} // namespace SoundService
