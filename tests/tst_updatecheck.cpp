// SPDX-License-Identifier: MIT
// The update check against a feed served from this process on 127.0.0.1: every failure must end in
// "no update", and nothing the server sends may make the check hang.
#include "TestSupport.h"
#include "services/UpdateCheckService.h"

#include <QElapsedTimer>
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

    QString feed() const { return m_server.base() + QStringLiteral("/feeds/version.json"); }
    void serve(const QByteArray &body) { m_server.routes = {{"/feeds/version.json", response(200, body)}}; }

private Q_SLOTS:
    void initTestCase()
    {
        for (const char *name : {"http_proxy", "HTTP_PROXY", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
            qunsetenv(name);
        QVERIFY(m_server.start());
    }

    void versionComparison()
    {
        const std::tuple<const char *, const char *, bool> cases[] = {
            {"1.10", "1.9", true},       // numeric, not textual
            {"1.2.1", "1.2", true},      // a longer list
            {"1.2", "1.2.0", false},     // missing parts are zero
            {"2.0-beta", "1.9", true},   // a suffix drops its part, not the version
            {"v2.0", "1.9", false},      // so does a letter prefix
            {"1..2", "1.1", true}};      // empty parts are skipped
        for (const auto &[candidate, reference, newer] : cases)
            QVERIFY2(UpdateCheckService::isVersionNewerThan(QString::fromUtf8(candidate), QString::fromUtf8(reference)) == newer, candidate);
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
        QTest::newRow("newer, other keys ignored") << feed("1.0.1", R"(, "minimumOS": 14, "Version": [])") << absolute << QVariant();
        QTest::newRow("404") << response(404, feed("9").split('\n').last()) << QString() << QVariant();
        QTest::newRow("number for notes") << response(200, R"({"version": "9", "downloadURL": "a.zip", "releaseNotes": 9})") << QString() << QVariant();
        QTest::newRow("list for notes") << response(200, R"({"version": "9", "downloadURL": "a.zip", "releaseNotes": ["Faster."]})") << QString() << QVariant();
        QTest::newRow("over the size cap") << feed("2", ", \"pad\": \"" + QByteArray(UpdateCheckService::maximumFeedBytes, 'x') + '"')
                                           << QString() << QVariant();
        // Only an https address is handed to the browser, or an http one from an http feed such as this
        // server: never a script, a file, a share or inline data.
        const auto offer = [](const char *download) { return response(200, "{\"version\": \"9\", \"downloadURL\": \"" + QByteArray(download) + "\"}"); };
        for (const char *download : {"javascript:alert(1)", "file:///etc/passwd", "smb://server/share/K.zip", "data:text/html,<b>x</b>", "https:K.zip"})
            QTest::newRow(download) << offer(download) << QString() << QVariant();
        QTest::newRow("notes blank") << feed("2", R"(, "releaseNotes": " \n\t \r\n")") << absolute << QVariant();
        QTest::newRow("notes padded") << feed("2", R"(, "releaseNotes": "\n\n  Faster scans.\nFewer clicks.  \n")") << absolute
                                      << QVariant(QStringLiteral("Faster scans.\nFewer clicks."));
        // A relative download resolves against the feed that was asked, not where the redirect led, and
        // a space in it is encoded rather than costing the offer.
        QTest::newRow("redirect, relative download") << response(302, "", "Location: /moved/version.json\r\n")
                                                     << "BASE/feeds/downloads/R%202.zip" << QVariant();
    }

    void feedAnswers()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QString, download);
        QFETCH(QVariant, notes);
        m_server.routes = {{"/feeds/version.json", reply},
                           {"/moved/version.json", response(200, R"({"version": "3", "downloadURL": "downloads/R 2.zip"})")}};
        const auto update = await(UpdateCheckService::checkForUpdate(QUrl(feed())));
        QCOMPARE(update.has_value(), !download.isEmpty());
        if (!update)
            return;
        QCOMPARE(update->downloadURL.toString(QUrl::FullyEncoded), download.replace(QStringLiteral("BASE"), m_server.base()));
        QCOMPARE(update->releaseNotes, notes.isValid() ? std::optional(notes.toString()) : std::nullopt);
    }

    // Only HTTP answers count: other feed schemes are not even asked. From an https feed even an http
    // download is refused (this server is plain http).
    void schemes()
    {
        QTemporaryDir dir;
        TestSupport::writeFile(dir.filePath(QStringLiteral("version.json")), "{\"version\": \"9\", \"downloadURL\": \"https://example.org/K.zip\"}");
        QVERIFY(!await(UpdateCheckService::checkForUpdate(QUrl::fromLocalFile(dir.filePath(QStringLiteral("version.json"))))));
        QVERIFY(!UpdateCheckService::isOfferedDownload(QUrl(QStringLiteral("https://example.org/version.json")), QUrl(QStringLiteral("http://cdn.example.org/K.zip"))));
    }

    // A feed that never answers, or a header that never ends, cannot stretch the time limit.
    void timeOuts()
    {
        for (const char *path : {"/silent", "/endless"}) {
            QElapsedTimer clock;
            clock.start();
            QVERIFY2(!await(UpdateCheckService::checkForUpdate(QUrl(m_server.base() + QLatin1String(path)), std::chrono::milliseconds(1000))), path);
            QVERIFY2(clock.elapsed() < 3000, qPrintable(QStringLiteral("%1 took %2 ms").arg(QLatin1String(path)).arg(clock.elapsed())));
        }
    }

    // Release notes keep their lines on a terminal, but an escape sequence in them is shown, not obeyed.
    // The JSON has the version as the feed spells it and the download made absolute; a feed offering
    // exactly the version the build was made as is no update.
    void commandLine()
    {
        serve("{\"version\": \"07.1-rc1\", \"downloadURL\": \"K.zip\", \"releaseNotes\": \"Faster.\\r\\n\\u001b]0;owned\\u0007\\u001b[2JSafer.\"}");
        const QByteArray out = checkUpdateOutput(feed());
        QVERIFY2(out.endsWith("\nFaster.\n\\x1B]0;owned\\x07\\x1B[2JSafer.\n"), out.constData());
        const QJsonObject offer{{"updateAvailable", true}, {"currentVersion", KESTRUNE_VERSION}, {"version", "07.1-rc1"},
                                {"downloadURL", m_server.base() + QStringLiteral("/feeds/K.zip")},
                                {"releaseNotes", "Faster.\r\n\x1b]0;owned\x07\x1b[2JSafer."}};
        QCOMPARE(QJsonDocument::fromJson(checkUpdateOutput(feed(), {"--json"})).object(), offer);
        serve("{\"version\": \"" KESTRUNE_VERSION "\", \"downloadURL\": \"K.zip\"}");
        const QJsonObject none{{"updateAvailable", false}, {"currentVersion", KESTRUNE_VERSION}};
        QCOMPARE(QJsonDocument::fromJson(checkUpdateOutput(feed(), {"--json"})).object(), none);
    }
};

QTEST_GUILESS_MAIN(UpdateCheckTest)
#include "tst_updatecheck.moc"
