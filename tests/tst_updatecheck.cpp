// SPDX-License-Identifier: MIT
// The update check against a feed served from this process on 127.0.0.1: every failure must end in
// "no update", and nothing the server sends may make the check hang or hold a large body in memory.
#include "services/UpdateCheckService.h"

#include <QElapsedTimer>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <sys/resource.h>

namespace {

QByteArray response(int status, const QByteArray &body, const QByteArray &headers = QByteArray())
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Status\r\nContent-Type: application/json\r\nContent-Length: "
           + QByteArray::number(body.size()) + "\r\nConnection: close\r\n" + headers + "\r\n" + body;
}

constexpr qint64 hugeBodyBytes = 50 * 1024 * 1024;

// Answers GET requests by path from a table; "/silent" never answers and "/huge" streams 50 MB.
class FeedServer : public QObject
{
public:
    QHash<QByteArray, QByteArray> routes;
    qint64 hugeBytesSent = 0;

    bool start()
    {
        connect(&m_server, &QTcpServer::newConnection, this, &FeedServer::accept);
        return m_server.listen(QHostAddress::LocalHost);
    }
    QString base() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort()); }

private:
    QTcpServer m_server;

    void accept()
    {
        while (QTcpSocket *socket = m_server.nextPendingConnection()) {
            auto *request = new QByteArray;
            connect(socket, &QTcpSocket::disconnected, socket, [socket, request] {
                delete request;
                socket->deleteLater();
            });
            connect(socket, &QTcpSocket::readyRead, this, [this, socket, request] {
                request->append(socket->readAll());
                if (!request->contains("\r\n\r\n") || request->isEmpty())
                    return;
                const QByteArray path = request->split(' ').value(1);
                request->clear();
                answer(socket, path);
            });
        }
    }

    void answer(QTcpSocket *socket, const QByteArray &path)
    {
        if (path == "/silent")
            return;
        if (path == "/huge") {
            socket->write("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(hugeBodyBytes) + "\r\n\r\n{\"pad\":\"");
            const QByteArray chunk(256 * 1024, 'x');
            auto feed = [this, socket, chunk] {
                while (socket->bytesToWrite() < 1024 * 1024 && hugeBytesSent < hugeBodyBytes) {
                    socket->write(chunk);
                    hugeBytesSent += chunk.size();
                }
            };
            connect(socket, &QTcpSocket::bytesWritten, socket, feed);
            feed();
            return;
        }
        socket->write(routes.value(path, response(404, "{}")));
        socket->disconnectFromHost();
    }
};

std::optional<AppUpdateInfo> await(const QFuture<std::optional<AppUpdateInfo>> &future)
{
    // The server lives on this thread, so wait by running its events.
    if (!QTest::qWaitFor([&] { return future.isFinished(); }, 30000))
        qFatal("the update check never finished");
    return future.result();
}

long peakResidentKiB()
{
    struct rusage usage {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

class UpdateCheckTest : public QObject
{
    Q_OBJECT

private:
    FeedServer m_server;

private Q_SLOTS:
    void initTestCase()
    {
        for (const char *name : {"http_proxy", "HTTP_PROXY", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
            qunsetenv(name);
        QVERIFY(m_server.start());
    }

    void versionComparison_data()
    {
        QTest::addColumn<QString>("candidate");
        QTest::addColumn<QString>("reference");
        QTest::addColumn<bool>("newer");
        QTest::newRow("numeric, not textual") << "1.10" << "1.9" << true;
        QTest::newRow("longer list") << "1.2.1" << "1.2" << true;
        QTest::newRow("missing parts are zero") << "1.2" << "1.2.0" << false;
        QTest::newRow("suffix drops the part") << "2.0-beta" << "1.9" << true;
        QTest::newRow("letter prefix drops the part") << "v2.0" << "1.9" << false;
        QTest::newRow("unknown running version") << "0.0.1" << "0" << true;
        QTest::newRow("empty parts skipped") << "1..2" << "1.1" << true;
        QTest::newRow("signs") << "+2" << "1" << true;
        QTest::newRow("negative") << "-1" << "0" << false;
        QTest::newRow("space drops the part") << "1. 5" << "1.0" << false;
        QTest::newRow("too large drops the part") << "1.99999999999999999999.3" << "1.2" << true;
        QTest::newRow("empty candidate") << "" << "0" << false;
        QTest::newRow("older") << "0.9" << "1.0.0" << false;
    }

    void versionComparison()
    {
        QFETCH(QString, candidate);
        QFETCH(QString, reference);
        QFETCH(bool, newer);
        QCOMPARE(UpdateCheckService::isVersionNewerThan(candidate, reference), newer);
    }

    void informationEntries_data()
    {
        QTest::addColumn<QVariant>("feedEntry");
        QTest::addColumn<QVariant>("versionEntry");
        QTest::addColumn<QString>("feed");
        QTest::addColumn<QString>("version");
        const QString fallback = UpdateCheckService::defaultFeedURL().toString();
        QTest::newRow("both texts") << QVariant("file:///srv/feed.json") << QVariant("2.1") << "file:///srv/feed.json" << "2.1";
        QTest::newRow("numbers") << QVariant(qint64(7)) << QVariant(qint64(2)) << fallback << "0";
        QTest::newRow("missing") << QVariant() << QVariant() << fallback << "0";
        QTest::newRow("unparsable feed") << QVariant("http://exa mple.org/v.json") << QVariant("1") << fallback << "1";
    }

    void informationEntries()
    {
        QFETCH(QVariant, feedEntry);
        QFETCH(QVariant, versionEntry);
        QFETCH(QString, feed);
        QFETCH(QString, version);
        QVariantMap information;
        if (feedEntry.isValid())
            information.insert(QStringLiteral("AppUpdateFeedURL"), feedEntry);
        if (versionEntry.isValid())
            information.insert(QStringLiteral("CFBundleShortVersionString"), versionEntry);
        QCOMPARE(UpdateCheckService::feedURLFrom(information).toString(), feed);
        QCOMPARE(UpdateCheckService::currentVersionFrom(information), version);
        QCOMPARE(UpdateCheckService::feedURLFrom(std::nullopt), UpdateCheckService::defaultFeedURL());
        QCOMPARE(UpdateCheckService::currentVersionFrom(std::nullopt), QStringLiteral("0"));
        QCOMPARE(UpdateCheckService::defaultFeedURL().scheme(), QStringLiteral("https"));
    }

    // The running version is the compiled-in one, 1.0.0.
    void feedAnswers_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<bool>("offered");
        QTest::addColumn<QString>("download"); // BASE stands for the server's address
        QTest::addColumn<QVariant>("notes");
        const QByteArray absolute = R"("downloadURL": "https://downloads.example.org/K.zip")";
        auto feed = [&](const QByteArray &version, const QByteArray &rest = QByteArray()) {
            return response(200, "{\"version\": \"" + version + "\", " + absolute + rest + "}");
        };
        const QString absoluteURL = QStringLiteral("https://downloads.example.org/K.zip");
        QTest::newRow("newer") << feed("1.0.1") << true << absoluteURL << QVariant();
        QTest::newRow("equal") << feed("1.0.0") << false << QString() << QVariant();
        QTest::newRow("404") << response(404, feed("9").split('\n').last()) << false << QString() << QVariant();
        QTest::newRow("not JSON") << response(200, "<html>9.0</html>") << false << QString() << QVariant();
        QTest::newRow("JSON array") << response(200, R"([{"version": "9", "downloadURL": "a.zip"}])") << false << QString() << QVariant();
        QTest::newRow("empty object") << response(200, "{}") << false << QString() << QVariant();
        QTest::newRow("no downloadURL") << response(200, R"({"version": "9"})") << false << QString() << QVariant();
        QTest::newRow("number for version") << response(200, R"({"version": 9, "downloadURL": "a.zip"})") << false << QString() << QVariant();
        QTest::newRow("number for notes") << feed("2", R"(, "releaseNotes": 3)") << false << QString() << QVariant();
        QTest::newRow("relative download") << response(200, R"({"version": "2", "downloadURL": "downloads/K 2.zip"})") << true
                                           << "BASE/feeds/downloads/K%202.zip" << QVariant();
        QTest::newRow("rooted download") << response(200, R"({"version": "2", "downloadURL": "/dl/K.zip"})") << true
                                         << "BASE/dl/K.zip" << QVariant();
        QTest::newRow("empty download") << response(200, R"({"version": "2", "downloadURL": ""})") << false << QString() << QVariant();
        QTest::newRow("notes null") << feed("2", R"(, "releaseNotes": null)") << true << absoluteURL << QVariant();
        QTest::newRow("notes blank") << feed("2", R"(, "releaseNotes": " \n\t \r\n")") << true << absoluteURL << QVariant();
        QTest::newRow("notes padded") << feed("2", R"(, "releaseNotes": "\n\n  Faster scans.\nFewer clicks.  \n")") << true
                                      << absoluteURL << QVariant(QStringLiteral("Faster scans.\nFewer clicks."));
        QTest::newRow("extra keys ignored") << feed("2", R"(, "channel": {"beta": true})") << true << absoluteURL << QVariant();
        QTest::newRow("redirect") << response(302, "", "Location: /moved/version.json\r\n") << true
                                  << "BASE/feeds/downloads/R.zip" << QVariant();
        QTest::newRow("redirect to 404") << response(301, "", "Location: /nowhere.json\r\n") << false << QString() << QVariant();
    }

    void feedAnswers()
    {
        QFETCH(QByteArray, reply);
        QFETCH(bool, offered);
        QFETCH(QString, download);
        QFETCH(QVariant, notes);
        m_server.routes = {{"/feeds/version.json", reply},
                           {"/moved/version.json", response(200, R"({"version": "3", "downloadURL": "downloads/R.zip"})")}};
        const QUrl feed(m_server.base() + QStringLiteral("/feeds/version.json"));
        const std::optional<AppUpdateInfo> update = await(UpdateCheckService::checkForUpdate(feed));
        QCOMPARE(update.has_value(), offered);
        if (!offered)
            return;
        // Relative downloads resolve against the feed that was asked, not where a redirect led.
        QCOMPARE(update->downloadURL.toString(QUrl::FullyEncoded), QString(download).replace(QStringLiteral("BASE"), m_server.base()));
        QCOMPARE(update->releaseNotes.has_value(), notes.isValid());
        if (notes.isValid())
            QCOMPARE(*update->releaseNotes, notes.toString());
    }

    void unreachableOrSilentFeeds()
    {
        QElapsedTimer clock;
        clock.start();
        const auto silent = await(UpdateCheckService::checkForUpdate(QUrl(m_server.base() + QStringLiteral("/silent")),
                                                                     std::chrono::milliseconds(300)));
        QVERIFY(!silent);
        QVERIFY2(clock.elapsed() < 10000, "the timeout was not honoured");

        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        const quint16 port = closed.serverPort();
        closed.close();
        QVERIFY(!await(UpdateCheckService::checkForUpdate(QUrl(QStringLiteral("http://127.0.0.1:%1/v.json").arg(port)))));
        QVERIFY(!await(UpdateCheckService::checkForUpdate(QUrl(QStringLiteral("data:application/json,{}")))));
    }

    void hugeBodyIsNotBuffered()
    {
        const long before = peakResidentKiB();
        const auto update = await(UpdateCheckService::checkForUpdate(QUrl(m_server.base() + QStringLiteral("/huge"))));
        QVERIFY(!update);
        QVERIFY2(m_server.hugeBytesSent < hugeBodyBytes,
                 qPrintable(QStringLiteral("the whole body was read: %1 bytes").arg(m_server.hugeBytesSent)));
        QVERIFY2(peakResidentKiB() - before < 30 * 1024, "the body was held in memory");
    }

    void commandLineShape_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QJsonObject>("expected");
        const QJsonObject none{{"updateAvailable", false}, {"currentVersion", KESTRUNE_VERSION}};
        QTest::newRow("offered") << "/feeds/version.json"
                                 << QJsonObject{{"updateAvailable", true}, {"currentVersion", KESTRUNE_VERSION}, {"version", "07.1-rc1"},
                                                {"downloadURL", "BASE/feeds/K.zip"}, {"releaseNotes", QJsonValue::Null}};
        QTest::newRow("with notes") << "/notes.json"
                                    << QJsonObject{{"updateAvailable", true}, {"currentVersion", KESTRUNE_VERSION}, {"version", "8"},
                                                   {"downloadURL", "https://example.org/K.zip"}, {"releaseNotes", "New."}};
        QTest::newRow("none") << "/missing.json" << none;
    }

    void commandLineShape()
    {
        QFETCH(QString, path);
        QFETCH(QJsonObject, expected);
        // The version is shown as the feed spells it.
        m_server.routes = {{"/feeds/version.json", response(200, "{\"version\": \"07.1-rc1\", \"downloadURL\": \"K.zip\"}")},
                           {"/notes.json", response(200, "{\"version\": \"8\", \"downloadURL\": \"https://example.org/K.zip\", \"releaseNotes\": \" New. \"}")}};
        if (expected.contains(QStringLiteral("downloadURL")))
            expected.insert(QStringLiteral("downloadURL"), expected.value(QStringLiteral("downloadURL")).toString().replace("BASE", m_server.base()));
        QProcess cli;
        cli.start(QStringLiteral(KESTRUNE_BINARY_DIR "/src/cli/kestrune-cli"),
                  {"check-update", "--feed", m_server.base() + path, "--json"});
        QVERIFY(QTest::qWaitFor([&] { return cli.state() == QProcess::NotRunning; }, 30000));
        QCOMPARE(cli.exitCode(), 0);
        QCOMPARE(QJsonDocument::fromJson(cli.readAllStandardOutput()).object(), expected);
    }
};

QTEST_GUILESS_MAIN(UpdateCheckTest)

#include "tst_updatecheck.moc"
