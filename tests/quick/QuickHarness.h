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
    Q_PROPERTY(QString sampleRoot READ sampleRoot CONSTANT)
    // The version the update check offers; empty offers none.
    Q_PROPERTY(QString offeredVersion MEMBER m_offeredVersion NOTIFY changed)
    Q_PROPERTY(int trashRuns MEMBER m_trashRuns NOTIFY changed)
    // When set, every item "moves" (nothing is touched) and can be put back; putBackRuns counts the tries.
    Q_PROPERTY(bool trashMoves MEMBER m_trashMoves NOTIFY changed)
    Q_PROPERTY(int putBackRuns MEMBER m_putBackRuns NOTIFY changed)
    Q_PROPERTY(QUrl lastOpenedUrl MEMBER m_lastOpenedUrl NOTIFY changed)
    // When set, discovery lists this many made-up apps (above zero) and every scan finds this many
    // items spread over the categories (zero and above): for empty results and the lists' laziness.
    Q_PROPERTY(int syntheticApps MEMBER m_syntheticApps NOTIFY changed)
    Q_PROPERTY(int syntheticItems MEMBER m_syntheticItems NOTIFY changed)
    // Set when the run was started under a dark desktop colour scheme, which the window must follow.
    Q_PROPERTY(bool expectsDarkScheme READ expectsDarkScheme CONSTANT)

public:
    explicit QuickHarness(QObject *parent = nullptr);
    ~QuickHarness() override;

    [[nodiscard]] QString sampleRoot() const;
    [[nodiscard]] static bool expectsDarkScheme() { return qEnvironmentVariableIntValue("KESTRUNE_EXPECT_DARK_SCHEME") == 1; }

    // A fresh state object owned by the caller's JavaScript; every Trash run fails each item, so the
    // warning banner can be tested without touching a Trash.
    Q_INVOKABLE QObject *newViewModel();
    // An update offer as the banner receives it; notes left undefined are absent.
    Q_INVOKABLE QVariant update(const QString &version, const QVariant &notes) const;
    Q_INVOKABLE QString applicationPath(const QString &bundleName) const;
    Q_INVOKABLE QUrl applicationUrl(const QString &bundleName) const;
    // A bundle outside the sample whose icon file is a pipe nobody writes to, as a hostile bundle could ship.
    Q_INVOKABLE QString bundleWithPipedIcon() const;

    // A drag from another program, delivered through the item's window as the platform delivers it:
    // enter and move over the item's centre, then a drop or a leave. The data may hold "urls" (a list),
    // "text" and "image" (true). Each returns whether the window accepted the event.
    Q_INVOKABLE bool dragOver(QQuickItem *item, const QVariantMap &data);
    Q_INVOKABLE bool dropOn(QQuickItem *item);
    Q_INVOKABLE void dragAway(QQuickItem *item);

    // A key pressed and released in a window of its own: TestCase sends keys only to the test's window.
    Q_INVOKABLE void keyClick(QObject *window, int key);

Q_SIGNALS:
    void changed();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QMimeData> m_dragData;
    QString m_offeredVersion;
    int m_trashRuns = 0;
    bool m_trashMoves = false;
    int m_putBackRuns = 0;
    QUrl m_lastOpenedUrl;
    int m_syntheticApps = 0;
    int m_syntheticItems = -1;
};
