// SPDX-License-Identifier: MIT
// The removed-app scan's name and grade rules, without a file system.
#include "services/OrphanRules.h"

#include <QTest>

using namespace OrphanRules;
using C = LeftoverCategory;
using O = OrphanConfidence;

Q_DECLARE_METATYPE(QList<LeftoverCategory>)
Q_DECLARE_METATYPE(std::optional<OrphanConfidence>)

class TestOrphanRules : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void likelyBundleID()
    {
        for (const QString &text : {QStringLiteral("com.example.app"), QStringLiteral("com.example"), QStringLiteral("ab.cd"),
                                    QStringLiteral("com.%1.app").arg(QString(292, u'x'))})
            QVERIFY2(isLikelyBundleID(text), qPrintable(text));
        // The emoji pair is five UTF-16 units: it must not pass on length alone.
        for (const char *text : {"a.b", "abcde", "com..example", "com.example.", "com.example_app", "Foo Bar.app", "com.café.app",
                                 "\U0001F98A.\U0001F98A"})
            QVERIFY2(!isLikelyBundleID(QString::fromUtf8(text)), text);
    }

    // g is the identifier in a group container's name ("" for none), n the display name made from a key.
    void textRules_data()
    {
        QTest::addColumn<char>("rule");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](char rule, const QString &text, const char *expected) {
            QTest::newRow(qPrintable(rule + QStringLiteral(": ") + text)) << rule << text << QString::fromUtf8(expected);
        };
        row('g', QStringLiteral("ABCDE12345.com.example.shared"), "ABCDE12345.com.example.shared");
        row('g', QStringLiteral("group.com.example.app"), "group.com.example.app");
        row('g', QStringLiteral("My Group_com.example.app x"), "com.example.app");
        row('g', QStringLiteral("x com.example.app.extra y"), "com.example.app.extra");
        row('g', QStringLiteral("x a..b.c"), "");
        row('g', QStringLiteral("shared stuff"), "");
        row('g', QString::fromUtf16(u"com.x.\xDCFF\xDCFE"), "");
        row('n', QStringLiteral("com.example.my-app"), "My App");
        row('n', QStringLiteral("com.example.SUPERApp"), "Superapp");
        row('n', QStringLiteral("com.example.tool."), "Tool");
    }
    void textRules()
    {
        QFETCH(char, rule);
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(rule == 'g' ? extractBundleIDFromGroupContainer(text).value_or(QString()) : displayNameFromKey(text), expected);
    }

    // What must never be proposed: the system's and this program's entries, and components of other apps.
    void systemAndComponents_data()
    {
        QTest::addColumn<QString>("bundleID"); // empty: none given
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("system");
        QTest::addColumn<bool>("component");
        QTest::newRow("apple, any case") << "COM.APPLE.Safari" << "Safari" << true << false;
        QTest::newRow("apple group") << "group.com.apple.notes" << "x" << true << false;
        QTest::newRow("this program") << "com.kestrune.app" << "Kestrune" << true << false;
        QTest::newRow("excluded name, case folded") << "" << "Google" << true << false;
        QTest::newRow("prefix of an excluded name") << "" << "Googlefoo" << false << false;
        QTest::newRow("name prefix without dot") << "" << "com.applesoft" << true << false;
        QTest::newRow("login item") << "com.example.app.LoginItem" << "App" << false << true;
        QTest::newRow("crash reporter in name") << "com.example.app" << "My CrashReporter" << false << true;
        QTest::newRow("helper word without dot") << "com.example.app" << "Helper" << false << false;
    }
    void systemAndComponents()
    {
        QFETCH(QString, bundleID);
        QFETCH(QString, name);
        QFETCH(bool, system);
        QFETCH(bool, component);
        QCOMPARE(isSystemArtifact(bundleID.isEmpty() ? std::nullopt : std::optional(bundleID), name), system);
        QCOMPARE(looksLikeComponent(bundleID, name), component);
    }

    // Every row of the grade table, with the sentence that explains it.
    void grades_data()
    {
        QTest::addColumn<bool>("hasBundleID");
        QTest::addColumn<QList<LeftoverCategory>>("categories");
        QTest::addColumn<std::optional<OrphanConfidence>>("grade");
        QTest::addColumn<QString>("evidence");
        const auto row = [](const char *tag, bool id, QList<C> categories, std::optional<OrphanConfidence> grade, const char *evidence = "") {
            const bool weak = grade == OrphanConfidence::uncertain;
            QTest::newRow(tag) << id << categories << grade << (weak ? "Weak match. Review carefully before deleting." : QString::fromUtf8(evidence));
        };
        const std::optional<O> dropped, high = O::high, medium = O::medium, uncertain = O::uncertain;
        row("no identifier, no support", false, {C::containers, C::preferences}, dropped);
        row("no identifier, support", false, {C::applicationSupport, C::caches}, high, "Strong match across 2 locations: Application Support, Caches.");
        row("single preference", true, {C::preferences}, dropped);
        row("single support", true, {C::applicationSupport}, dropped);
        row("single container", true, {C::containers}, high, "Strong match across 1 locations: Containers.");
        row("container beats weak rest", true, {C::webKit, C::containers}, high, "Strong match across 2 locations: Containers, WebKit.");
        row("support twice", true, {C::applicationSupport, C::applicationSupport}, high, "Strong match across 2 locations: Application Support.");
        row("preference and cache", true, {C::preferences, C::caches}, medium, "Related files in 2 locations: Caches, Preferences.");
        row("preference and saved state", true, {C::savedState, C::preferences}, medium, "Related files in 2 locations: Preferences, Saved Application State.");
        row("preference and group", true, {C::preferences, C::groupContainers}, medium, "Related files in 2 locations: Group Containers, Preferences.");
        row("preference and two web", true, {C::preferences, C::webKit, C::httpStorages}, medium, "Related files in 3 locations: HTTP Storages, Preferences, WebKit.");
        row("preference and web", true, {C::preferences, C::webKit}, uncertain);
        row("two without preference", true, {C::savedState, C::webKit}, uncertain);
        row("three with cache", true, {C::caches, C::webKit, C::caches}, medium, "Related files in 3 locations: Caches, WebKit.");
        row("three without cache", true, {C::savedState, C::webKit, C::httpStorages}, uncertain);
        row("launch item of a vanished bundle, no identifier", false, {C::launchDaemons}, high,
            "Strong match across 1 locations: Launch Daemons.");
        row("launch item beats weak rest", true, {C::httpStorages, C::launchAgents}, high,
            "Strong match across 2 locations: HTTP Storages, Launch Agents.");
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

    // Grade first, then total size (a sum over items), then name.
    void order()
    {
        QList<OrphanedAppGroup> groups;
        for (const auto &[name, grade, megabytes] : std::initializer_list<std::tuple<const char *, O, QList<qint64>>>{
                 {"zero", O::high, {0}}, {"medium50", O::medium, {50}}, {"Beta", O::high, {5}}, {"high10", O::high, {10}},
                 {"uncertain", O::uncertain, {90}}, {"alpha", O::high, {2, 3}}, {"high20", O::high, {20}}}) {
            groups.append({name, name, name, grade, QString(), {}});
            for (const qint64 size : megabytes)
                groups.last().items.append(LeftoverItem::at(QStringLiteral("/x/%1%2").arg(name).arg(size), C::caches, size * 1000 * 1000));
        }
        sortGroups(groups);
        QStringList names;
        for (const OrphanedAppGroup &g : groups)
            names.append(g.displayName);
        QCOMPARE(names, (QStringList{"high20", "high10", "alpha", "Beta", "zero", "medium50", "uncertain"}));
    }
};

QTEST_GUILESS_MAIN(TestOrphanRules)
#include "tst_orphanrules.moc"
