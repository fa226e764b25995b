// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariant>

#include <memory>

class QMimeData;
class QQuickItem;
class QTemporaryDir;

// Hands the Qt Quick tests real state objects on one sample Mac. Discovery, scans and dropped bundles
// are real; the Trash, the sound, the update check and the browser are stand-ins, so no test moves a
// file, plays a sound or reaches the network.
class QuickHarness : public QObject {
    Q_OBJECT
    // When set, every item "moves" (nothing is touched) and can be put back; else every item fails.
    Q_PROPERTY(bool trashMoves MEMBER m_trashMoves NOTIFY changed)
    Q_PROPERTY(QUrl lastOpenedUrl MEMBER m_lastOpenedUrl NOTIFY changed)
    // Set when the run was started under a dark desktop colour scheme, which the window must follow.
    Q_PROPERTY(bool expectsDarkScheme READ expectsDarkScheme CONSTANT)

public:
    explicit QuickHarness(QObject *parent = nullptr);
    ~QuickHarness() override;

    [[nodiscard]] static bool expectsDarkScheme() { return qEnvironmentVariableIntValue("KESTRUNE_EXPECT_DARK_SCHEME") == 1; }

    // A fresh state object owned by the caller's JavaScript. Options: "offeredVersion", the version its
    // update check offers (none when absent); "syntheticApps", a count of made-up apps discovery lists
    // instead of the sample's; "syntheticItems", a count of items every scan finds, spread over the
    // categories (for empty results and the lists' laziness).
    Q_INVOKABLE QObject *newViewModel(const QVariantMap &options = {});
    // An update offer as the banner receives it; notes left undefined are absent.
    Q_INVOKABLE QVariant update(const QString &version, const QVariant &notes) const;
    Q_INVOKABLE QString applicationPath(const QString &bundleName) const;
    // A bundle outside the sample whose icon file is a pipe nobody writes to, as a hostile bundle could ship.
    Q_INVOKABLE QString bundleWithPipedIcon() const;

    // A drag from another program, delivered through the item's window as the platform delivers it:
    // enter and move over the item's centre, then a drop or a leave. The data may hold "urls" (a list),
    // "text" and "image" (true). Each returns whether the window accepted the event.
    Q_INVOKABLE bool dragOver(QQuickItem *item, const QVariantMap &data);
    Q_INVOKABLE bool dropOn(QQuickItem *item);
    Q_INVOKABLE void dragAway(QQuickItem *item);

Q_SIGNALS:
    void changed();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QMimeData> m_dragData;
    bool m_trashMoves = false;
    QUrl m_lastOpenedUrl;
};
