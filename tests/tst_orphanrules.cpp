// SPDX-License-Identifier: MIT
// The removed-app scan's name and grade rules, without a file system.
#include "services/OrphanRules.h"

#include <QTest>

using namespace OrphanRules;
using C = LeftoverCategory;

Q_DECLARE_METATYPE(QList<LeftoverCategory>)
Q_DECLARE_METATYPE(std::optional<OrphanConfidence>)

class TestOrphanRules : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void likelyBundleID_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("expected");
        QTest::newRow("plain") << "com.example.app" << true;
        QTest::newRow("two parts") << "com.example" << true;
        QTest::newRow("three characters") << "a.b" << false;
        QTest::newRow("exactly five") << "ab.cd" << true;
        QTest::newRow("no dot") << "abcde" << false;
        QTest::newRow("empty part") << "com..example" << false;
        QTest::newRow("trailing dot") << "com.example." << false;
        QTest::newRow("underscore") << "com.example_app" << false;
        QTest::newRow("space") << "Foo Bar.app" << false;
        QTest::newRow("trailing newline") << "com.example\n" << false;
        QTest::newRow("non-ASCII letter") << "com.café.app" << false;
        // Five UTF-16 units but one dot-less grapheme run: must not pass on length alone.
        QTest::newRow("emoji") << "\U0001F98A.\U0001F98A" << false;
        QTest::newRow("300 characters") << (QStringLiteral("com.") + QString(292, QLatin1Char('x')) + QStringLiteral(".app")) << true;
    }
    void likelyBundleID()
    {
        QFETCH(QString, text);
        QFETCH(bool, expected);
        QCOMPARE(isLikelyBundleID(text), expected);
    }

    void systemArtifact_data()
    {
        QTest::addColumn<QString>("bundleID"); // empty: none given
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("expected");
        QTest::newRow("apple, any case") << "COM.APPLE.Safari" << "Safari" << true;
        QTest::newRow("apple group") << "group.com.apple.notes" << "x" << true;
        QTest::newRow("this program") << "com.kestrune.app" << "Kestrune" << true;
        QTest::newRow("excluded name, case folded") << "" << "Google" << true;
        QTest::newRow("prefix of an excluded name") << "" << "Googlefoo" << false;
        QTest::newRow("name prefix without dot") << "" << "com.applesoft" << true;
        QTest::newRow("name prefix, any case") << "" << "COM.Apple.TextEdit" << true;
        QTest::newRow("apple-like identifier without dot") << "com.applesoft.app" << "Soft" << false;
    }
    void systemArtifact()
    {
        QFETCH(QString, bundleID);
        QFETCH(QString, name);
        QFETCH(bool, expected);
        const std::optional<QString> given = bundleID.isEmpty() ? std::nullopt : std::optional(bundleID);
        QCOMPARE(isSystemArtifact(given, name), expected);
    }

    void groupContainerIdentifier_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("expected"); // empty: absent
        QTest::newRow("team prefix kept") << "ABCDE12345.com.example.shared" << "ABCDE12345.com.example.shared";
        QTest::newRow("group prefix kept") << "group.com.example.app" << "group.com.example.app";
        QTest::newRow("embedded") << "My Group_com.example.app x" << "com.example.app";
        QTest::newRow("embedded, greedy") << "x com.example.app.extra y" << "com.example.app.extra";
        QTest::newRow("embedded match not plausible") << "x a..b.c" << "";
        QTest::newRow("nothing") << "shared stuff" << "";
        QTest::newRow("lone surrogates") << QString::fromUtf16(u"com.x.\xDCFF\xDCFE") << "";
    }
    void groupContainerIdentifier()
    {
        QFETCH(QString, name);
        QFETCH(QString, expected);
        QCOMPARE(extractBundleIDFromGroupContainer(name).value_or(QString()), expected);
    }

    void components_data()
    {
        QTest::addColumn<QString>("bundleID");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("expected");
        QTest::newRow("login item") << "com.example.app.LoginItem" << "App" << true;
        QTest::newRow("crash reporter in name") << "com.example.app" << "My CrashReporter" << true;
        QTest::newRow("xpc needs both dots") << "com.example.xpc" << "App" << false;
        QTest::newRow("xpc inside") << "com.example.xpc.fetch" << "App" << true;
        QTest::newRow("helper word without dot") << "com.example.app" << "Helper" << false;
        QTest::newRow("marker across the joining space") << "com.example" << "agent" << false;
        QTest::newRow("ordinary") << "com.example.app" << "Example" << false;
    }
    void components()
    {
        QFETCH(QString, bundleID);
        QFETCH(QString, name);
        QFETCH(bool, expected);
        QCOMPARE(looksLikeComponent(bundleID, name), expected);
    }

    // Every row of the grade table, with the sentence that explains it.
    void grades_data()
    {
        QTest::addColumn<bool>("hasBundleID");
        QTest::addColumn<QList<LeftoverCategory>>("categories");
        QTest::addColumn<std::optional<OrphanConfidence>>("grade");
        QTest::addColumn<QString>("evidence");
        const std::optional<OrphanConfidence> dropped;
        const auto high = std::optional(OrphanConfidence::high);
        const auto medium = std::optional(OrphanConfidence::medium);
        const auto uncertain = std::optional(OrphanConfidence::uncertain);
        const QString weak = QStringLiteral("Weak match. Review carefully before deleting.");
        QTest::newRow("no identifier, no support") << false << QList{C::containers, C::preferences} << dropped << "";
        QTest::newRow("no identifier, support") << false << QList{C::applicationSupport, C::caches} << high
                                                << "Strong match across 2 locations: Application Support, Caches.";
        QTest::newRow("single preference") << true << QList{C::preferences} << dropped << "";
        QTest::newRow("single cache") << true << QList{C::caches} << dropped << "";
        QTest::newRow("single web data") << true << QList{C::webKit} << dropped << "";
        QTest::newRow("single cookie file") << true << QList{C::httpStorages} << dropped << "";
        QTest::newRow("single container") << true << QList{C::containers} << high
                                          << "Strong match across 1 locations: Containers.";
        QTest::newRow("container beats weak rest") << true << QList{C::webKit, C::containers} << high
                                                   << "Strong match across 2 locations: Containers, WebKit.";
        QTest::newRow("support twice, one category") << true << QList{C::applicationSupport, C::applicationSupport} << high
                                                     << "Strong match across 2 locations: Application Support.";
        QTest::newRow("single support") << true << QList{C::applicationSupport} << dropped << "";
        QTest::newRow("preference and cache") << true << QList{C::preferences, C::caches} << medium
                                              << "Related files in 2 locations: Caches, Preferences.";
        QTest::newRow("preference and saved state") << true << QList{C::savedState, C::preferences} << medium
                                                     << "Related files in 2 locations: Preferences, Saved Application State.";
        QTest::newRow("preference and group") << true << QList{C::preferences, C::groupContainers} << medium
                                              << "Related files in 2 locations: Group Containers, Preferences.";
        QTest::newRow("preference and two web") << true << QList{C::preferences, C::webKit, C::httpStorages} << medium
                                                << "Related files in 3 locations: HTTP Storages, Preferences, WebKit.";
        QTest::newRow("preference and web") << true << QList{C::preferences, C::webKit} << uncertain << weak;
        QTest::newRow("single saved state") << true << QList{C::savedState} << dropped << "";
        QTest::newRow("single group") << true << QList{C::groupContainers} << dropped << "";
        QTest::newRow("two without preference") << true << QList{C::savedState, C::webKit} << uncertain << weak;
        QTest::newRow("three with cache") << true << QList{C::caches, C::webKit, C::caches} << medium
                                          << "Related files in 3 locations: Caches, WebKit.";
        QTest::newRow("three without cache") << true << QList{C::savedState, C::webKit, C::httpStorages} << uncertain << weak;
    }
    void grades()
    {
        QFETCH(bool, hasBundleID);
        QFETCH(QList<LeftoverCategory>, categories);
        QFETCH(std::optional<OrphanConfidence>, grade);
        QFETCH(QString, evidence);
        QCOMPARE(evaluateConfidence(hasBundleID, categories), grade);
        if (grade)
            QCOMPARE(evidenceSummary(*grade, categories), evidence);
    }

    void displayNameFallback_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected");
        QTest::newRow("hyphenated") << "com.example.my-app" << "My App";
        QTest::newRow("upper case folded") << "com.example.SUPERApp" << "Superapp";
        QTest::newRow("underscore stays") << "com.example.big_tool" << "Big_tool";
        QTest::newRow("trailing dot") << "com.example.tool." << "Tool";
        QTest::newRow("only dots") << "..." << "...";
    }
    void displayNameFallback()
    {
        QFETCH(QString, key);
        QFETCH(QString, expected);
        QCOMPARE(displayNameFromKey(key), expected);
    }

    void order()
    {
        const auto group = [](const QString &name, OrphanConfidence grade, QList<qint64> sizes) {
            OrphanedAppGroup g{name, name, name, grade, QString(), {}};
            for (const qint64 size : sizes)
                g.items.append(LeftoverItem::at(QStringLiteral("/x/") + name + QString::number(g.items.size()), C::caches, size));
            return g;
        };
        const qint64 mb = 1000 * 1000;
        QList<OrphanedAppGroup> groups = {
            group(QStringLiteral("zero"), OrphanConfidence::high, {0}),
            group(QStringLiteral("medium50"), OrphanConfidence::medium, {50 * mb}),
            group(QStringLiteral("Beta"), OrphanConfidence::high, {5 * mb}),
            group(QStringLiteral("high10"), OrphanConfidence::high, {10 * mb}),
            group(QStringLiteral("uncertain"), OrphanConfidence::uncertain, {90 * mb}),
            group(QStringLiteral("alpha"), OrphanConfidence::high, {2 * mb, 3 * mb}), // size is the sum
            group(QStringLiteral("high20"), OrphanConfidence::high, {20 * mb}),
        };
        sortGroups(groups);
        QStringList names;
        for (const OrphanedAppGroup &g : groups)
            names.append(g.displayName);
        QCOMPARE(names, (QStringList{"high20", "high10", "alpha", "Beta", "zero", "medium50", "uncertain"}));
    }
};

QTEST_GUILESS_MAIN(TestOrphanRules)
#include "tst_orphanrules.moc"
