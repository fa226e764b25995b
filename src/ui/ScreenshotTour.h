// SPDX-License-Identifier: MIT
#pragma once

#include "state/AppViewModel.h"

#include <QString>

class QQmlApplicationEngine;

namespace ScreenshotTour {

// Walks the loaded window through its main views on the folders FileSystemLayout points at and saves
// a picture of each into `folder` (NAME-light.png or NAME-dark.png, after the desktop's scheme, which
// the tour leaves alone), printing every written path. Ends the event loop
// with 0 when done, or with 1 and a message on stderr when a step does not finish in time. Nothing is
// ever moved to the Trash.
void start(QQmlApplicationEngine &engine, const QString &folder);

// For the window's own state object until the tour swaps in its own: it finds no apps and offers no
// update, so the tour starts nothing real on the network or the disk.
AppViewModelServices idleServices();

} // namespace ScreenshotTour
