// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "models/LeftoverCategory.h"
#include "models/LeftoverItem.h"
#include "models/OrphanedAppGroup.h"
#include "models/ScanResult.h"

#include <QTest>

class RecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Titles in display order: they head the result sections and name categories in the JSON output.
    void categoryRawValues()
    {
        const QStringList titles{"Application", "Application Support", "Caches", "Preferences", "Containers",
                                 "Group Containers", "Logs", "Saved Application State", "WebKit", "HTTP Storages",
                                 "Launch Agents", "Launch Daemons", "Privileged Helper Tools", "Plugins & Extensions",
                                 "Preference Panes", "Other Related Files"};
        QCOMPARE(qsizetype(LeftoverCategories::allCases.size()), titles.size());
        for (qsizetype k = 0; k < titles.size(); ++k) {
            const LeftoverCategory category = LeftoverCategories::allCases[std::size_t(k)];
            QCOMPARE(LeftoverCategories::rawValue(category), titles.at(k));
            QCOMPARE(LeftoverCategories::fromRawValue(titles.at(k)), std::optional(category));
        }
    }

    void requiresAdmin_data()
    {
        QTest::addColumn<QString>("root");
        QTest::addColumn<QString>("path");
        QTest::addColumn<LeftoverCategory>("category");
        QTest::addColumn<bool>("admin");
        QTest::newRow("system library") << "/" << "/Library/Application Support/Foo" << LeftoverCategory::applicationSupport << true;
        QTest::newRow("user library") << "/" << "/Users/ann/Library/Application Support/Foo" << LeftoverCategory::applicationSupport << false;
        QTest::newRow("daemon anywhere") << "/" << "/Users/ann/x.plist" << LeftoverCategory::launchDaemons << true;
        QTest::newRow("helper anywhere") << "/" << "/tmp/helper" << LeftoverCategory::privilegedHelperTools << true;
        QTest::newRow("prefix is plain text") << "/" << "/LibraryX/foo" << LeftoverCategory::other << true;
        QTest::newRow("case-sensitive") << "/" << "/library/foo" << LeftoverCategory::other << false;
        QTest::newRow("under the sample root") << "/tmp/mac" << "/tmp/mac/Library/Caches/x" << LeftoverCategory::caches << true;
        QTest::newRow("root's Library outside the sample") << "/tmp/mac" << "/Library/Caches/x" << LeftoverCategory::caches << false;
        QTest::newRow("home under the sample root") << "/tmp/mac" << "/tmp/mac/Users/ann/Library/Caches/x" << LeftoverCategory::caches << false;
    }
    void requiresAdmin()
    {
        QFETCH(QString, root);
        QFETCH(QString, path);
        QFETCH(LeftoverCategory, category);
        QFETCH(bool, admin);
        TestSupport::useLayout(root, root + QStringLiteral("/Users/ann"));
        QCOMPARE(LeftoverItem::at(path, category, 1).requiresAdmin(), admin);
    }

    // Equality is the compiler's; the hand-written hash must agree with it.
    void itemsAndGroups()
    {
        TestSupport::useLayout(QStringLiteral("/"), QStringLiteral("/Users/ann"));
        const LeftoverItem a = LeftoverItem::at(QStringLiteral("/Users/ann/Library/Caches/a"), LeftoverCategory::caches, 100);
        const LeftoverItem b = LeftoverItem::at(QStringLiteral("/Users/ann/Library/Logs/b"), LeftoverCategory::logs, 250);
        QCOMPARE(a, LeftoverItem::at(a.id, a.category, a.size));
        QCOMPARE(qHash(a), qHash(LeftoverItem::at(a.id, a.category, a.size)));
        QCOMPARE(a.name(), QStringLiteral("a"));

        const OrphanedAppGroup group{QStringLiteral("com.x"), QStringLiteral("X"), QStringLiteral("com.x"),
                                     OrphanConfidence::high, QStringLiteral("Why."), {a, b}};
        QCOMPARE(group.scanResult().itemsFor(LeftoverCategory::logs), QList<LeftoverItem>{b});
    }
};

QTEST_GUILESS_MAIN(RecordsTest)
#include "tst_records.moc"
