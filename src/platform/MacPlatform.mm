// SPDX-License-Identifier: MIT
#include "platform/MacPlatform.h"

#include <QDesktopServices>
#include <QUrl>

#import <AppKit/AppKit.h>
#import <Foundation/Foundation.h>

namespace MacPlatform {

bool trashItem(const QString &path, QString *error, QString *trashedPath)
{
    @autoreleasepool {
        NSURL *url = [NSURL fileURLWithPath:path.toNSString()];
        NSURL *resulting = nil;
        NSError *failure = nil;
        const BOOL moved = [[NSFileManager defaultManager] trashItemAtURL:url resultingItemURL:&resulting error:&failure];
        if (moved && trashedPath)
            *trashedPath = resulting ? QString::fromNSString(resulting.path) : QString();
        if (!moved && error)
            *error = failure ? QString::fromNSString(failure.localizedDescription)
                             : QStringLiteral("The item could not be moved to the Trash.");
        return moved;
    }
}

bool beep()
{
    NSBeep();
    return true;
}

bool showAboutPanel()
{
    [NSApp orderFrontStandardAboutPanel:nil];
    return true;
}

bool canOpenFullDiskAccessSettings()
{
    return true;
}

void openFullDiskAccessSettings()
{
    // System Settings (macOS 13+) and System Preferences both answer this address.
    QDesktopServices::openUrl(
        QUrl(QStringLiteral("x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles")));
}

} // namespace MacPlatform
