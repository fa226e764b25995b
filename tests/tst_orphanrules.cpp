// SPDX-License-Identifier: MIT
// The removed-app scan's name and grade rules, without a file system.
#include "services/OrphanRules.h"

#include <QTest>

using namespace OrphanRules;
using C = LeftoverCategory;
using O = OrphanConfidence;

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

    // The identifier in a group container's name (none when it holds none), and the display name made
    // from a key: the group container and name cases the sample Mac does not reach.
    void textRules()
    {
        const auto group = [](const QString &name) { return extractBundleIDFromGroupContainer(name).value_or(QStringLiteral("-")); };
        QCOMPARE(group(QStringLiteral("My Group_com.example.app x")), QStringLiteral("com.example.app"));
        QCOMPARE(group(QStringLiteral("x com.example.app.extra y")), QStringLiteral("com.example.app.extra"));
        QCOMPARE(group(QStringLiteral("x a..b.c")), QStringLiteral("-"));
        QCOMPARE(group(QString::fromUtf16(u"com.x.\xDCFF\xDCFE")), QStringLiteral("-"));
        QCOMPARE(displayNameFromKey(QStringLiteral("com.example.SUPERApp")), QStringLiteral("Superapp"));
        QCOMPARE(displayNameFromKey(QStringLiteral("com.example.tool.")), QStringLiteral("Tool"));
    }

    // What must never be proposed, the system's entries and components of other apps, where the sample
    // Mac has no case: identifiers in other case, Apple's group containers, names that only start
    // like an excluded one, and words that are no component marker.
    void systemAndComponents()
    {
        QVERIFY(isSystemArtifact(QStringLiteral("COM.APPLE.Safari"), QStringLiteral("Safari")));
        QVERIFY(isSystemArtifact(QStringLiteral("group.com.apple.notes"), QStringLiteral("x")));
        QVERIFY(!isSystemArtifact(std::nullopt, QStringLiteral("Googlefoo")));
        QVERIFY(looksLikeComponent(QStringLiteral("com.example.app.LoginItem"), QStringLiteral("App")));
        QVERIFY(!looksLikeComponent(QStringLiteral("com.example.app"), QStringLiteral("Helper")));
    }

    // The grades the sample Mac's removed apps do not reach, with the sentence that explains each.
    void grades()
    {
        const std::optional<O> dropped, high = O::high, medium = O::medium;
        const std::tuple<bool, QList<C>, std::optional<O>, const char *> cases[] = {
            {false, {C::containers, C::preferences}, dropped, "no identifier, no support"},
            {true, {C::preferences}, dropped, "a preference file alone"},
            {false, {C::applicationSupport, C::caches}, high, "Strong match across 2 locations: Application Support, Caches."},
            {true, {C::webKit, C::containers}, high, "Strong match across 2 locations: Containers, WebKit."},
            {true, {C::applicationSupport, C::applicationSupport}, high, "Strong match across 2 locations: Application Support."},
            {true, {C::preferences, C::caches}, medium, "Related files in 2 locations: Caches, Preferences."},
            {true, {C::preferences, C::groupContainers}, medium, "Related files in 2 locations: Group Containers, Preferences."},
            // A launch item runs a program from a bundle that is gone, even without an identifier.
            {false, {C::launchDaemons}, high, "Strong match across 1 locations: Launch Daemons."},
            {true, {C::httpStorages, C::launchAgents}, high, "Strong match across 2 locations: HTTP Storages, Launch Agents."}};
        for (const auto &[hasBundleID, categories, grade, evidence] : cases) {
            QVERIFY2(evaluateConfidence(hasBundleID, categories) == grade, evidence);
            if (grade)
                QCOMPARE(evidenceSummary(*grade, categories), QString::fromUtf8(evidence));
        }
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
