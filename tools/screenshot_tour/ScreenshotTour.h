// SPDX-License-Identifier: MIT
#pragma once

#include "state/AppViewModel.h"

#include <QFutureWatcher>
#include <QList>
#include <QObject>
#include <QPromise>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>

class QQuickItem;
class QQuickWindow;

// Walks the window through its main views on the folders FileSystemLayout points at and saves a
// picture of each into a folder (NAME-light.png or NAME-dark.png, after the desktop's scheme, which the
// tour leaves alone), printing every written path. It acts on the views only through their state object,
// except that it scrolls a list by its position where a picture needs rows further down. Nothing goes
// to the Trash.
class ScreenshotTour : public QObject {
    Q_OBJECT

public:
    // Every picture the tour takes, in the order it takes them.
    [[nodiscard]] static QStringList pictureNames();

    // Saves the pictures named in `only`, or every one when it is empty.
    ScreenshotTour(QString folder, QStringList only, QObject *parent = nullptr);
    ~ScreenshotTour() override;

    // For the state object the window is loaded with: the real services, except that the app list and
    // the removed-app scan are held back until the tour has taken them loading, an update is always
    // offered and the Trash refuses every item.
    [[nodiscard]] AppViewModelServices services();

    void start(AppViewModel &viewModel, QQuickWindow &window);

Q_SIGNALS:
    // 0 once every picture is saved; 1 after a step failed, with a message on stderr.
    void finished(int exitCode);

private:
    // Connects a check to one signal, in the tour's context.
    using Watch = std::function<QMetaObject::Connection(QObject *, const std::function<void()> &)>;
    struct Step {
        std::function<void()> act;
        QString waitingFor;
        QList<Watch> wakeOn;
        std::function<bool()> done;
    };

    void buildSteps();
    void then(std::function<void()> act, QString waitingFor = {}, QList<Watch> wakeOn = {},
              std::function<bool()> done = {});
    void shoot(const QString &picture);
    [[nodiscard]] Watch on(void (AppViewModel::*signal)());

    // Gives the window time to settle, then runs the next step and waits for what it waits for.
    void runNext();
    void check();
    void fail(const QString &message);
    void save(const QString &picture);

    void chooseApp();
    [[nodiscard]] QString groupToShow() const;
    void scroll(QQuickItem &list, qreal pixels);
    void scrollToEnd(const char *listName);
    void centreItem(const char *listName, const QString &itemId);

    QString m_folder;
    QStringList m_only;
    QPromise<void> m_appsRelease;
    QPromise<void> m_removedScanRelease;
    AppViewModel *m_viewModel = nullptr;
    QQuickWindow *m_window = nullptr;
    QFutureWatcher<QString> m_appChoice;
    QList<Step> m_steps;
    qsizetype m_next = 0;
    bool m_stopped = false;
    QList<QMetaObject::Connection> m_waiting;
    QTimer m_deadline;
};
