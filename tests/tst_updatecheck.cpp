// SPDX-License-Identifier: MIT
// The update check against a feed served from this process on 127.0.0.1: every failure must end in
// "no update", and nothing the server sends may make the check hang.
#include "services/UpdateCheckService.h"

#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {

QByteArray response(int status, const QByteArray &body, const QByteArray &headers = QByteArray())
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Status\r\nContent-Type: application/json\r\nContent-Length: "
           + QByteArray::number(body.size()) + "\r\nConnection: close\r\n" + headers + "\r\n" + body;
}

// Answers GET requests by path from a table, 404 for any other path; "/silent" never answers.
class FeedServer : public QObject
{
public:
    QHash<QByteArray, QByteArray> routes;

    bool start()
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            // Sockets stay children of the server until the test ends.
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
        });
        return m_server.listen(QHostAddress::LocalHost);
    }
    QString base() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort()); }

private:
    QTcpServer m_server;

    // Only once the whole request is read: closing on unread bytes would reset the connection.
    void answer(QTcpSocket *socket)
    {
        const QByteArray request = socket->property("request").toByteArray() + socket->readAll();
        socket->setProperty("request", request);
        const QByteArray path = request.split(' ').value(1);
        if (!request.contains("\r\n\r\n") || path == "/silent")
            return;
        if (path == "/endless") {
            // A status line, then header lines as fast as the connection takes them, never the blank line.
            socket->write("HTTP/1.1 200 OK\r\n");
            auto *flood = new QTimer(socket);
            connect(flood, &QTimer::timeout, socket, [socket] {
                if (socket->bytesToWrite() < 1024 * 1024)
                    socket->write(QByteArray("X-Pad: " + QByteArray(1000, 'x') + "\r\n").repeated(64));
            });
            flood->start(1);
            return;
        }
        socket->write(routes.value(path, response(404, "{}")));
        socket->disconnectFromHost();
    }
};

// kestrune-cli check-update against the served feed, run while this thread keeps serving.
QByteArray checkUpdateOutput(const QString &feed, const QStringList &extra = {})
{
    QProcess cli;
    cli.start(QStringLiteral(KESTRUNE_BINARY_DIR "/src/cli/kestrune-cli"), QStringList{"check-update", "--feed", feed} + extra);
    if (!QTest::qWaitFor([&] { return cli.state() == QProcess::NotRunning; }, 30000) || cli.exitCode() != 0)
        return "<failed>";
    return cli.readAllStandardOutput();
}

std::optional<AppUpdateInfo> await(const QFuture<std::optional<AppUpdateInfo>> &future)
{
    // The server lives on this thread, so wait by running its events.
    if (!QTest::qWaitFor([&] { return future.isFinished(); }, 30000))
        qFatal("the update check never finished");
    return future.result();
}

} // namespace

class UpdateCheckTest : public QObject
{
    Q_OBJECT

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
    }

    void versionComparison()
    {
        QFETCH(QString, candidate);
        QFETCH(QString, reference);
        QFETCH(bool, newer);
        QCOMPARE(UpdateCheckService::isVersionNewerThan(candidate, reference), newer);
    }

    // The running version is the compiled-in one, 1.0.0.
    void feedAnswers_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QString>("download"); // empty: no offer; BASE stands for the server's address
        QTest::addColumn<QVariant>("notes");
        const QString absolute = QStringLiteral("https://downloads.example.org/K.zip");
        auto feed = [](const QByteArray &version, const QByteArray &rest = QByteArray()) {
            return response(200, "{\"version\": \"" + version + "\", \"downloadURL\": \"https://downloads.example.org/K.zip\"" + rest + "}");
        };
        QTest::newRow("newer") << feed("1.0.1") << absolute << QVariant();
        QTest::newRow("equal") << feed("1.0.0") << QString() << QVariant();
        QTest::newRow("404") << response(404, feed("9").split('\n').last()) << QString() << QVariant();
        QTest::newRow("not JSON") << response(200, "<html>9.0</html>") << QString() << QVariant();
        QTest::newRow("no downloadURL") << response(200, R"({"version": "9"})") << QString() << QVariant();
        QTest::newRow("number for version") << response(200, R"({"version": 9, "downloadURL": "a.zip"})") << QString() << QVariant();
        QTest::newRow("number for notes") << response(200, R"({"version": "9", "downloadURL": "a.zip", "releaseNotes": 9})") << QString() << QVariant();
        QTest::newRow("list for notes") << response(200, R"({"version": "9", "downloadURL": "a.zip", "releaseNotes": ["Faster."]})") << QString() << QVariant();
        QTest::newRow("other keys ignored") << feed("2", R"(, "minimumOS": 14, "Version": [])") << absolute << QVariant();
        QTest::newRow("over the size cap") << feed("2", ", \"pad\": \"" + QByteArray(UpdateCheckService::maximumFeedBytes, 'x') + '"')
                                           << QString() << QVariant();
        QTest::newRow("relative download") << response(200, R"({"version": "2", "downloadURL": "downloads/K 2.zip"})")
                                           << "BASE/feeds/downloads/K%202.zip" << QVariant();
        QTest::newRow("notes blank") << feed("2", R"(, "releaseNotes": " \n\t \r\n")") << absolute << QVariant();
        QTest::newRow("notes padded") << feed("2", R"(, "releaseNotes": "\n\n  Faster scans.\nFewer clicks.  \n")") << absolute
                                      << QVariant(QStringLiteral("Faster scans.\nFewer clicks."));
        // Relative downloads resolve against the feed that was asked, not where the redirect led.
        QTest::newRow("redirect") << response(302, "", "Location: /moved/version.json\r\n") << "BASE/feeds/downloads/R.zip" << QVariant();
    }

    void feedAnswers()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QString, download);
        QFETCH(QVariant, notes);
        m_server.routes = {{"/feeds/version.json", reply},
                           {"/moved/version.json", response(200, R"({"version": "3", "downloadURL": "downloads/R.zip"})")}};
        const auto update = await(UpdateCheckService::checkForUpdate(QUrl(m_server.base() + QStringLiteral("/feeds/version.json"))));
        QCOMPARE(update.has_value(), !download.isEmpty());
        if (!update)
            return;
        QCOMPARE(update->downloadURL.toString(QUrl::FullyEncoded), download.replace(QStringLiteral("BASE"), m_server.base()));
        QCOMPARE(update->releaseNotes, notes.isValid() ? std::optional(notes.toString()) : std::nullopt);
    }

    // Only an https address is handed to the browser, or an http one when the feed itself is http:
    // never a script, a file, a share or inline data.
    void offeredDownloads_data()
    {
        QTest::addColumn<QString>("feed");
        QTest::addColumn<QString>("download");
        QTest::addColumn<bool>("offered");
        const QString secure = QStringLiteral("https://example.org/version.json");
        const QString plain = QStringLiteral("http://example.org/version.json");
        QTest::newRow("https from https") << secure << "https://cdn.example.org/K.zip" << true;
        QTest::newRow("relative from https") << secure << "K.zip" << true;
        QTest::newRow("http from https") << secure << "http://cdn.example.org/K.zip" << false;
        QTest::newRow("http from http") << plain << "http://cdn.example.org/K.zip" << true;
        QTest::newRow("javascript") << plain << "javascript:alert(1)" << false;
        QTest::newRow("file") << plain << "file:///etc/passwd" << false;
        QTest::newRow("smb") << plain << "smb://server/share/K.zip" << false;
        QTest::newRow("data") << plain << "data:text/html,<b>x</b>" << false;
        QTest::newRow("https without a host") << secure << "https:K.zip" << false;
    }
    void offeredDownloads()
    {
        QFETCH(QString, feed);
        QFETCH(QString, download);
        QFETCH(bool, offered);
        m_server.routes = {{"/feeds/version.json", response(200, "{\"version\": \"9\", \"downloadURL\": \"" + download.toUtf8() + "\"}")}};
        const QUrl served(m_server.base() + QStringLiteral("/feeds/version.json"));
        const bool plainFeed = feed.startsWith(QLatin1String("http:"));
        // The server is plain http; a download from an https feed is judged by the rule alone.
        if (plainFeed)
            QCOMPARE(await(UpdateCheckService::checkForUpdate(served)).has_value(), offered);
        const QUrl resolved = QUrl(feed).resolved(QUrl(download));
        QCOMPARE(UpdateCheckService::isOfferedDownload(QUrl(feed), resolved), offered);
    }

    // Only HTTP answers count: other schemes are not even asked.
    void otherFeedSchemes()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("version.json"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\"version\": \"9\", \"downloadURL\": \"https://example.org/K.zip\"}");
        file.close();
        QVERIFY(!await(UpdateCheckService::checkForUpdate(QUrl::fromLocalFile(path))));
    }

    // A feed that never answers, or a header that never ends, cannot stretch the time limit.
    void timeOuts_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("silent") << "/silent";
        QTest::newRow("endless header") << "/endless";
    }
    void timeOuts()
    {
        QFETCH(QString, path);
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!await(UpdateCheckService::checkForUpdate(QUrl(m_server.base() + path), std::chrono::milliseconds(1000))));
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QStringLiteral("took %1 ms").arg(clock.elapsed())));
    }

    // Release notes keep their lines on a terminal, but an escape sequence in them is shown, not obeyed.
    void commandLineNotesAreShownNotObeyed()
    {
        m_server.routes = {{"/feeds/version.json", response(200, "{\"version\": \"9\", \"downloadURL\": \"K.zip\", "
                                                                 "\"releaseNotes\": \"Faster.\\r\\n\\u001b]0;owned\\u0007\\u001b[2JSafer.\"}")}};
        const QByteArray out = checkUpdateOutput(m_server.base() + QStringLiteral("/feeds/version.json"));
        QVERIFY2(out.endsWith("\nFaster.\n\\x1B]0;owned\\x07\\x1B[2JSafer.\n"), out.constData());
    }

    // The command line's JSON, with the version as the feed spells it and the download made absolute; a
    // feed offering exactly the version the build was made as is not an update.
    void commandLineShape_data()
    {
        QTest::addColumn<QString>("offered");
        QTest::addColumn<bool>("available");
        QTest::newRow("newer") << "07.1-rc1" << true;
        QTest::newRow("this version") << KESTRUNE_VERSION << false;
    }

    void commandLineShape()
    {
        QFETCH(QString, offered);
        QFETCH(bool, available);
        m_server.routes = {{"/feeds/version.json", response(200, QStringLiteral(R"({"version": "%1", "downloadURL": "K.zip"})").arg(offered).toUtf8())}};
        QJsonObject expected{{"updateAvailable", available}, {"currentVersion", KESTRUNE_VERSION}};
        if (available) {
            expected.insert("version", offered);
            expected.insert("downloadURL", m_server.base() + QStringLiteral("/feeds/K.zip"));
            expected.insert("releaseNotes", QJsonValue::Null);
        }
        QCOMPARE(QJsonDocument::fromJson(checkUpdateOutput(m_server.base() + QStringLiteral("/feeds/version.json"), {"--json"})).object(), expected);
    }
};

QTEST_GUILESS_MAIN(UpdateCheckTest)
#include "tst_updatecheck.moc"
