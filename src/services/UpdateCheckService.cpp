// SPDX-License-Identifier: MIT
#include "services/UpdateCheckService.h"

#include "platform/PropertyList.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPromise>
#include <QThreadPool>
#include <QTimer>

#include <functional>
#include <memory>

// A resource in a static library is only linked in when something names its initialiser
// (https://doc.qt.io/qt-6/resources.html#using-resources-in-a-library).
static void initialiseOwnResources()
{
    Q_INIT_RESOURCE(kestrune);
}

namespace UpdateCheckService {

namespace {

struct ReleaseManifest {
    QString version;
    QString downloadURL;
    std::optional<QString> releaseNotes;
};

// "version" and "downloadURL" must be strings, "releaseNotes" a string, null or missing; other keys are
// ignored. Anything else (a key missing or of another type, a body that is no JSON object) gives no
// manifest, and so no update is offered.
std::optional<ReleaseManifest> decodeManifest(const QByteArray &body)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    const QJsonValue version = object.value(QLatin1String("version"));
    const QJsonValue downloadURL = object.value(QLatin1String("downloadURL"));
    const QJsonValue notes = object.value(QLatin1String("releaseNotes"));
    if (!version.isString() || !downloadURL.isString())
        return std::nullopt;
    ReleaseManifest manifest{version.toString(), downloadURL.toString(), std::nullopt};
    if (notes.isString())
        manifest.releaseNotes = notes.toString();
    else if (!notes.isUndefined() && !notes.isNull())
        return std::nullopt;
    return manifest;
}

std::optional<QUrl> resolvedDownloadURL(const QUrl &feed, const QString &downloadPath)
{
    // Tolerant, so a space in a file name is encoded rather than costing the whole offer.
    const QUrl parsed(downloadPath, QUrl::TolerantMode);
    if (downloadPath.isEmpty() || !parsed.isValid())
        return std::nullopt;
    // RFC 3986 resolution drops the base's last segment, so the reference lands beside the feed document.
    const QUrl resolved = parsed.scheme().isEmpty() ? feed.resolved(parsed) : parsed;
    if (!resolved.isValid() || resolved.isRelative() || !isOfferedDownload(feed, resolved))
        return std::nullopt;
    return resolved;
}

std::optional<qint64> versionPart(QStringView text)
{
    QStringView digits = text;
    if (digits.startsWith(QLatin1Char('+')) || digits.startsWith(QLatin1Char('-')))
        digits = digits.mid(1);
    if (digits.isEmpty() || !std::all_of(digits.begin(), digits.end(), [](QChar c) {
            return c >= QLatin1Char('0') && c <= QLatin1Char('9');
        }))
        return std::nullopt;
    bool ok = false;
    // toLongLong accepts a leading "+" and "-" itself and reports overflow.
    const qint64 value = text.toLongLong(&ok, 10);
    return ok ? std::optional<qint64>(value) : std::nullopt;
}

QList<qint64> versionParts(const QString &version)
{
    QList<qint64> parts;
    for (QStringView text : QStringView(version).split(QLatin1Char('.'))) {
        if (const auto part = versionPart(text))
            parts.append(*part);
    }
    return parts;
}

struct Response {
    int status = 0;
    QByteArray body;
};

std::optional<AppUpdateInfo> offerFrom(const QUrl &feed, const std::optional<Response> &response);

// Runs on a pool thread: its own event loop drives the request, so the caller never waits. The answer
// is delivered as soon as the request ends or the deadline passes, before the network objects are torn
// down: with Qt 6.4 that can wait a further five seconds for Qt's connection thread when a server floods
// it (an endless header), and the deadline is for the whole check.
void fetch(const QUrl &feed, std::chrono::milliseconds timeout, const std::function<void(const std::optional<Response> &)> &deliver)
{
    QNetworkAccessManager manager;
    QNetworkRequest request(feed);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);

    QEventLoop loop;
    QNetworkReply *reply = manager.get(request);
    reply->setReadBufferSize(64 * 1024);
    QByteArray body;
    bool abandoned = false;
    const auto takeData = [&] {
        body += reply->read(maximumFeedBytes + 1 - body.size());
        if (body.size() > maximumFeedBytes && !abandoned) {
            abandoned = true;
            reply->abort();
        }
    };
    QObject::connect(reply, &QNetworkReply::readyRead, &loop, takeData);
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, &loop, [&] {
        abandoned = true;
        loop.quit();
        reply->abort();
    });
    deadline.start(timeout);
    if (!reply->isFinished())
        loop.exec();
    if (!abandoned)
        takeData();

    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const bool failed = abandoned || reply->error() != QNetworkReply::NoError || !status.isValid();
    deliver(failed ? std::nullopt : std::optional<Response>(Response{status.toInt(), body}));
    delete reply;
}

std::optional<AppUpdateInfo> offerFrom(const QUrl &feed, const std::optional<Response> &response)
{
    if (!response || response->status < 200 || response->status > 299)
        return std::nullopt;
    const std::optional<ReleaseManifest> manifest = decodeManifest(response->body);
    if (!manifest || !isVersionNewerThan(manifest->version, currentVersion()))
        return std::nullopt;
    const std::optional<QUrl> download = resolvedDownloadURL(feed, manifest->downloadURL);
    if (!download)
        return std::nullopt;
    std::optional<QString> notes;
    if (manifest->releaseNotes) {
        const QString trimmed = manifest->releaseNotes->trimmed();
        if (!trimmed.isEmpty())
            notes = trimmed;
    }
    return AppUpdateInfo{manifest->version, *download, notes};
}

} // namespace

std::optional<QVariantMap> ownInformation()
{
    // The build generates one Info.plist: the bundle's on a Mac and this resource in every build, so
    // a program outside its bundle (the command line, a test) still knows its version.
    static const std::optional<QVariantMap> information = [] {
        initialiseOwnResources();
        QFile file(QStringLiteral(":/kestrune/Info.plist"));
        if (!file.open(QIODevice::ReadOnly))
            return std::optional<QVariantMap>();
        const std::optional<QVariant> value = PropertyList::fromData(file.readAll());
        if (!value || value->typeId() != QMetaType::QVariantMap)
            return std::optional<QVariantMap>();
        return std::optional<QVariantMap>(value->toMap());
    }();
    return information;
}

QUrl defaultFeedURL()
{
    static const QUrl url(QStringLiteral("https://kestrune.app/version.json"));
    return url;
}

QUrl feedURLFrom(const std::optional<QVariantMap> &information)
{
    if (!information)
        return defaultFeedURL();
    const QVariant entry = information->value(QStringLiteral("AppUpdateFeedURL"));
    if (entry.typeId() != QMetaType::QString)
        return defaultFeedURL();
    const QUrl url(entry.toString(), QUrl::StrictMode);
    return url.isValid() && !url.isEmpty() ? url : defaultFeedURL();
}

QString currentVersionFrom(const std::optional<QVariantMap> &information)
{
    if (!information)
        return QStringLiteral("0");
    const QVariant entry = information->value(QStringLiteral("CFBundleShortVersionString"));
    return entry.typeId() == QMetaType::QString ? entry.toString() : QStringLiteral("0");
}

QUrl feedURL()
{
    return feedURLFrom(ownInformation());
}

QString currentVersion()
{
    return currentVersionFrom(ownInformation());
}

QFuture<std::optional<AppUpdateInfo>> checkForUpdate(const QUrl &feed, std::chrono::milliseconds timeout)
{
    auto promise = std::make_shared<QPromise<std::optional<AppUpdateInfo>>>();
    promise->start();
    QFuture<std::optional<AppUpdateInfo>> future = promise->future();
    // Only an HTTP answer counts: a file or any other scheme is never fetched.
    if (!isFeedScheme(feed.scheme())) {
        promise->addResult(std::nullopt);
        promise->finish();
        return future;
    }
    QThreadPool::globalInstance()->start([promise, feed, timeout] {
        fetch(feed, timeout, [&](const std::optional<Response> &response) {
            promise->addResult(offerFrom(feed, response));
            promise->finish();
        });
    });
    return future;
}

bool isFeedScheme(const QString &scheme)
{
    return scheme == QLatin1String("https") || scheme == QLatin1String("http");
}

bool isOfferedDownload(const QUrl &feed, const QUrl &download)
{
    // The address goes to the browser as it is: a script, a file or a share must never get there.
    const bool secure = download.scheme() == QLatin1String("https");
    const bool plainFromPlainFeed = download.scheme() == QLatin1String("http") && feed.scheme() == QLatin1String("http");
    return (secure || plainFromPlainFeed) && !download.host().isEmpty();
}

bool isVersionNewerThan(const QString &candidate, const QString &reference)
{
    const QList<qint64> mine = versionParts(candidate);
    const QList<qint64> theirs = versionParts(reference);
    for (qsizetype i = 0; i < std::max(mine.size(), theirs.size()); ++i) {
        const qint64 a = i < mine.size() ? mine.at(i) : 0;
        const qint64 b = i < theirs.size() ? theirs.at(i) : 0;
        if (a != b)
            return a > b;
    }
    return false;
}

} // namespace UpdateCheckService
