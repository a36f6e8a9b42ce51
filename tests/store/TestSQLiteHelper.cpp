#include "store/SQLiteHelper.h"

#include "store/PlanStore.h"
#include "support/LogCapture.h"
#include "support/StandardOutput.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

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

} // namespace

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
        QCOMPARE(sample.title + sample.begin + sample.end + sample.content,
                 u"Sample chime03:0003:01chime.wav"_s);
        QVERIFY(
            std::none_of(planWeekdays.begin(), planWeekdays.end(), [&](auto day) { return sample.*day; }));
        store.toggleChecked(sample);
        store.deleteCheckedPlans();

        SQLiteHelper later(documents, resources);
        QCOMPARE(printedBy([&later] { later.dbURL(); }), QStringList());
        QVERIFY(PlanStore(later.db()).plans->isEmpty());
    }

    void aLinkToNothing_isFollowed()
    {
        QVERIFY(QFile::link(u"later/bells.db"_s, folder->filePath(u"data.db"_s)));
        SQLiteHelper(folder->path(), resources).dbURL();
        QVERIFY(QDir(folder->path()).mkdir(u"later"_s));
        SQLiteHelper helper(folder->path(), resources);
        QCOMPARE(printedBy([&helper] { helper.dbURL(); }).size(), 2);
        QCOMPARE(PlanStore(helper.db()).plans->size(), 1);
        QVERIFY(QFileInfo(helper.dbURL()).isSymLink() &&
                QFile::exists(folder->filePath(u"later/bells.db"_s)));
    }

    void aMissingTemplate_givesNoPath()
    {
        const LogCapture log;
        QVERIFY(SQLiteHelper(folder->path(), Resources(folder->path())).dbURL().isEmpty());
        QCOMPARE(log.lines().size(), 1);
    }

    void aFolderThatCannotBeMade_isReported()
    {
        write(folder->filePath(u"file"_s), "x");
        SQLiteHelper helper(folder->filePath(u"file/Documents"_s), resources);
        const QStringList lines = printedBy([&helper] { helper.dbURL(); });
        QCOMPARE(lines.size(), 4);
        QVERIFY(lines.at(1).startsWith(u"创建Document下的软件目录出错："_s) && lines.at(1).size() > 25);
    }

    void aDamagedFile_isLeftByteForByte()
    {
        const QByteArray whole = contentOf(*resources.path(u"data"_s, u"db"_s));
        const QByteArray noDatabase = QByteArray("Dear Sir or Madam,\n").repeated(500);
        const QByteArray noSchema = whole.first(100) + QByteArray(2000, '\xaa') + whole.sliced(2100);
        for (const QByteArray &content :
             {noDatabase, QByteArray(), whole.first(whole.size() / 2), noSchema}) {
            write(folder->filePath(u"data.db"_s), content);
            const LogCapture log;
            PlanStore store(SQLiteHelper(folder->path(), resources).db());
            QVERIFY(store.plans->isEmpty());
            QVERIFY(!store.addPlan({.id = u"1"_s, .begin = u"08:00"_s}));
            QVERIFY(!log.lines().isEmpty());
            QCOMPARE(contentOf(folder->filePath(u"data.db"_s)), content);
            QCOMPARE(QDir(folder->path()).entryList(QDir::Files), QStringList{u"data.db"_s});
        }
    }
};

QTEST_GUILESS_MAIN(TestSQLiteHelper)
#include "TestSQLiteHelper.moc"
