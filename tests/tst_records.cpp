// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "models/LeftoverItem.h"

#include <QTest>

class RecordsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
};

QTEST_GUILESS_MAIN(RecordsTest)
#include "tst_records.moc"
