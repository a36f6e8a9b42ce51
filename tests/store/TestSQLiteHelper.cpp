#include "store/SQLiteHelper.h"

#include "db/FMDatabase.h"
#include "store/PlanStore.h"
#include "support/LogCapture.h"
#include "support/StandardOutput.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

// Root may write everything; so, for its life, nobody in particular.
class AsNobody final
{
    Q_DISABLE_COPY_MOVE(AsNobody)

public:
    AsNobody()
    {
        if (before == 0 && ::seteuid(65534) != 0)
            qFatal("cannot drop root's rights");
    }
    ~AsNobody()
    {
        if (before == 0 && ::seteuid(before) != 0)
            qFatal("cannot regain root's rights");
    }

private:
    const uid_t before = ::geteuid();
};

} // namespace

class TestSQLiteHelper final : public QObject
{
    Q_OBJECT

private:
    const Resources resources = Resources(QStringLiteral(BELFRY_RESOURCES));

private Q_SLOTS:
    void firstStart_copiesTheTemplate_laterOnesKeepTheFile()
    {
        const QTemporaryDir folder;
        const QString documents = folder.filePath(u"a new/folder of Jürgen's 铃"_s);
        const QString path = documents + u"/data.db"_s;
        SQLiteHelper helper(documents, resources);
        StandardOutput out;
        QCOMPARE(helper.dbURL(), path);
        QCOMPARE(helper.dbURL(), path);
        QCOMPARE(out.takeLines(), (QStringList{u"数据库不存在："_s + path,
                                               u"bundleDbPath = "_s + *resources.path(u"data"_s, u"db"_s)}));
        QCOMPARE(helper.db().get(), helper.db().get());
        PlanStore store(helper.db());
        QCOMPARE(store.plans->size(), 1);
        const Plan sample = store.plans->first();
        QCOMPARE(sample.title + sample.begin + sample.end + sample.content,
                 u"Sample chime03:0003:01chime.wav"_s);
        QVERIFY(
            std::none_of(planWeekdays.begin(), planWeekdays.end(), [&](auto day) { return sample.*day; }));
        store.toggleChecked(sample);
        store.deleteCheckedPlans();

        QCOMPARE(SQLiteHelper(documents, resources).dbURL(), path);
        QCOMPARE(out.takeLines(), QStringList());
        QVERIFY(PlanStore(SQLiteHelper(documents, resources).db()).plans->isEmpty());
    }

    // An installed template may be read-only; the user's copy of it must not be.
    void theCopyCanBeWritten()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"resources/data.db"_s);
        QDir().mkpath(folder.filePath(u"resources"_s));
        QVERIFY(QFile::copy(*resources.path(u"data"_s, u"db"_s), path));
        QFile::setPermissions(path, QFile::ReadOwner);
        StandardOutput out;
        SQLiteHelper helper(folder.filePath(u"Documents"_s), Resources(folder.filePath(u"resources"_s)));
        QVERIFY(QFile::permissions(helper.dbURL()) & QFile::WriteOwner);
    }

    void aFolderThatCannotBeMade_isReported()
    {
        const QTemporaryDir folder;
        write(folder.filePath(u"file"_s), "x");
        SQLiteHelper helper(folder.filePath(u"file/Documents"_s), resources);
        StandardOutput out;
        LogCapture log;
        QCOMPARE(helper.dbURL(), folder.filePath(u"file/Documents/data.db"_s));
        const QStringList lines = out.takeLines();
        QCOMPARE(lines.size(), 4);
        QVERIFY(lines.at(1).startsWith(u"创建Document下的软件目录出错："_s) && lines.at(1).size() > 25);
        QVERIFY(!lines.at(3).isEmpty());
        QVERIFY(PlanStore(helper.db()).plans->isEmpty());
        QCOMPARE(log.lines(), QStringList{u"error opening!: 14"_s});
    }

    void aDamagedFile_isLeftByteForByte_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("not a database") << QByteArray("Dear Sir or Madam,\n").repeated(500);
        QTest::newRow("empty") << QByteArray();
        const QByteArray whole = contentOf(*resources.path(u"data"_s, u"db"_s));
        QTest::newRow("cut short") << whole.left(whole.size() / 2);
        QByteArray rubbish = whole;
        rubbish.replace(100, 2000, QByteArray(2000, '\xaa'));
        QTest::newRow("rubbish in the schema") << rubbish;
    }
    void aDamagedFile_isLeftByteForByte()
    {
        QFETCH(QByteArray, content);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"data.db"_s);
        write(path, content);
        LogCapture log;
        PlanStore store(SQLiteHelper(folder.path(), resources).db());
        QVERIFY(store.plans->isEmpty());
        QVERIFY(!store.addPlan({.id = u"1"_s, .begin = u"08:00"_s}));
        QVERIFY(!log.lines().isEmpty());
        QCOMPARE(contentOf(path), content);
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{u"data.db"_s});
    }

    void aReadOnlyDatabase_isShownAndLeft_data()
    {
        QTest::addColumn<QString>("readOnly");
        QTest::newRow("the file") << u"data.db"_s;
        QTest::newRow("the folder") << u"."_s;
    }
    void aReadOnlyDatabase_isShownAndLeft()
    {
        QFETCH(QString, readOnly);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"data.db"_s);
        const QByteArray content = contentOf(*resources.path(u"data"_s, u"db"_s));
        write(path, content);
        for (const auto &each : {path, folder.path()})
            QFile::setPermissions(each, QFile::Permissions::fromInt(0x7777));
        QFile::setPermissions(folder.filePath(readOnly), QFile::Permissions::fromInt(0x5555));
        {
            const AsNobody nobody;
            LogCapture log;
            PlanStore store(SQLiteHelper(folder.path(), resources).db());
            QCOMPARE(store.plans->size(), 1);
            QVERIFY(!store.addPlan({.id = u"1"_s, .begin = u"08:00"_s}));
            store.toggleChecked(store.plans->first());
            store.deleteCheckedPlans();
            QCOMPARE(store.plans->size(), 1);
            QCOMPARE(log.lines().size(), 2);
        }
        QCOMPARE(contentOf(path), content);
        QFile::setPermissions(folder.path(), QFile::Permissions::fromInt(0x7777));
    }

    void aFolderOfThatName_leavesTheListEmpty()
    {
        const QTemporaryDir folder;
        QDir(folder.path()).mkdir(u"data.db"_s);
        StandardOutput out;
        LogCapture log;
        QVERIFY(PlanStore(SQLiteHelper(folder.path(), resources).db()).plans->isEmpty());
        QCOMPARE(log.lines(), QStringList{u"error opening!: 14"_s});
        QCOMPARE(out.takeLines(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestSQLiteHelper)
#include "TestSQLiteHelper.moc"
