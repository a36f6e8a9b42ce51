#include "store/SQLiteHelper.h"

#include "store/PlanStore.h"
#include "support/LogCapture.h"
#include "support/StandardOutput.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class TestSQLiteHelper final : public QObject
{
    Q_OBJECT

private:
    const Resources resources = Resources(QStringLiteral(BELFRY_RESOURCES));
    std::unique_ptr<QTemporaryDir> folder;

private Q_SLOTS:
    void init() { folder = std::make_unique<QTemporaryDir>(); }

    void firstStart_copiesTheTemplate_laterOnesKeepTheFile()
    {
        // An installed template may be read-only; the user's copy of it must not be.
        const QString source = folder->filePath(u"data.db"_s);
        QVERIFY(QFile::copy(*resources.path(u"data"_s, u"db"_s), source));
        QFile::setPermissions(source, QFile::Permissions::fromInt(0x4444));
        const QString documents = folder->filePath(u"a new/folder of Jürgen's 铃"_s);
        const QString path = documents + u"/data.db"_s;
        SQLiteHelper helper(documents, Resources(folder->path()));
        QCOMPARE(printedBy([&helper] { helper.dbURL(); }),
                 (QStringList{u"数据库不存在："_s + path, u"bundleDbPath = "_s + source}));
        QCOMPARE(helper.dbURL(), path);
        QCOMPARE(helper.db().get(), helper.db().get());
        QVERIFY(QFile::permissions(path) & QFile::WriteOwner);
        PlanStore store(helper.db());
        QCOMPARE(store.plans->size(), 1);
        const Plan sample = store.plans->first();
        QCOMPARE(sample.title + sample.begin + sample.content, u"Sample chime03:00chime.wav"_s);
        for (const auto day : planWeekdays)
            QVERIFY(!(sample.*day));
        store.toggleChecked(sample);
        store.deleteCheckedPlans();

        qputenv("XDG_DOCUMENTS_DIR", documents.toUtf8());
        SQLiteHelper &later = SQLiteHelper::shared();
        QCOMPARE(printedBy([&later] { later.dbURL(); }), QStringList());
        QVERIFY(PlanStore(later.db()).plans->isEmpty());
    }

    void aLinkToNothing_isFollowed()
    {
        QVERIFY(QDir(folder->path()).mkdir(u"later"_s));
        QVERIFY(QFile::link(u"later/bells.db"_s, folder->filePath(u"data.db"_s)));
        SQLiteHelper helper(folder->path(), resources);
        QCOMPARE(printedBy([&helper] { helper.dbURL(); }).size(), 2);
        QVERIFY(QFileInfo(helper.dbURL()).isSymLink());
        QVERIFY(QFileInfo(folder->filePath(u"later/bells.db"_s)).size() > 0);
    }

    void aMissingTemplate_givesNoPath()
    {
        const LogCapture log;
        QVERIFY(SQLiteHelper(folder->path(), Resources(folder->path())).dbURL().isEmpty());
        QCOMPARE(log.lines().size(), 1);
    }

    void aFolderThatCannotBeMade_isReported()
    {
        QVERIFY(QFile(folder->filePath(u"file"_s)).open(QIODevice::WriteOnly));
        SQLiteHelper helper(folder->filePath(u"file/Documents"_s), resources);
        const QStringList lines = printedBy([&helper] { helper.dbURL(); });
        QCOMPARE(lines.size(), 4);
        QVERIFY(lines.at(1).startsWith(u"创建Document下的软件目录出错："_s) && lines.at(1).size() > 25);
    }

    void aFileThatIsNoDatabase_isLeftByteForByte()
    {
        const QByteArray content = QByteArray("Dear Sir or Madam,\n").repeated(500);
        QFile file(folder->filePath(u"data.db"_s));
        QVERIFY(file.open(QIODevice::ReadWrite) && file.write(content) > 0 && file.flush());
        const LogCapture log;
        PlanStore store(SQLiteHelper(folder->path(), resources).db());
        QVERIFY(store.plans->isEmpty() && !store.addPlan({.id = u"1"_s}) && !log.lines().isEmpty());
        QVERIFY(file.seek(0));
        QCOMPARE(file.readAll(), content);
    }
};

QTEST_GUILESS_MAIN(TestSQLiteHelper)
#include "TestSQLiteHelper.moc"
