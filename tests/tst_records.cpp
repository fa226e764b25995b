// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "models/OrphanedAppGroup.h"

#include <QTest>

class RecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Titles in display order: they head the result sections and name categories in the JSON output.
    void categoryRawValues()
    {
        const QStringList titles{"Application", "Application Support", "Caches", "Preferences", "Containers", "Group Containers",
                                 "Logs", "Saved Application State", "WebKit", "HTTP Storages", "Launch Agents", "Launch Daemons",
                                 "Privileged Helper Tools", "Plugins & Extensions", "Preference Panes", "Other Related Files"};
        QStringList raw;
        for (const LeftoverCategory category : LeftoverCategories::allCases) {
            raw.append(LeftoverCategories::rawValue(category));
            QCOMPARE(LeftoverCategories::fromRawValue(raw.last()), std::optional(category));
        }
        QCOMPARE(raw, titles);
    }

    void requiresAdmin()
    {
        auto admin = [](const QString &root, const QString &path, LeftoverCategory category) {
            TestSupport::useLayout(root, root + QStringLiteral("/Users/ann"));
            return LeftoverItem::at(path, category, 1).requiresAdmin();
        };
        using C = LeftoverCategory;
        QVERIFY(admin("/", "/Library/Application Support/Foo", C::applicationSupport));
        QVERIFY(!admin("/", "/Users/ann/Library/Application Support/Foo", C::applicationSupport));
        QVERIFY(admin("/", "/Users/ann/x.plist", C::launchDaemons));
        QVERIFY(admin("/", "/tmp/helper", C::privilegedHelperTools));
        QVERIFY(admin("/", "/LibraryX/foo", C::other)); // the prefix is plain text, not a path component
        QVERIFY(admin("/tmp/mac", "/tmp/mac/Library/Caches/x", C::caches));
        QVERIFY(!admin("/tmp/mac", "/Library/Caches/x", C::caches));
    }

    // Equality is the compiler's; the hand-written hash must agree with it.
    void itemsAndGroups()
    {
        const LeftoverItem a = LeftoverItem::at(QStringLiteral("/Users/ann/Library/Caches/a"), LeftoverCategory::caches, 100);
        const LeftoverItem b = LeftoverItem::at(QStringLiteral("/Users/ann/Library/Logs/b"), LeftoverCategory::logs, 250);
        QCOMPARE(qHash(a), qHash(LeftoverItem::at(a.id, a.category, a.size)));
        const OrphanedAppGroup group{"com.x", "X", "com.x", OrphanConfidence::high, "Why.", {a, b}};
        QCOMPARE(group.scanResult().itemsFor(LeftoverCategory::logs), QList<LeftoverItem>{b});
    }
};

QTEST_GUILESS_MAIN(RecordsTest)
#include "tst_records.moc"
