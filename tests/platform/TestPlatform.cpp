#include "platform/Clock.h"
#include "platform/FilePath.h"
#include "platform/Log.h"
#include "platform/ObservableObject.h"
#include "platform/Resources.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

class TestPlatform final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A write that blocks, or one that fails with SIGPIPE, would not let this come to its end.
    void logLine_isWrittenAtOnceOrDropped()
    {
        int ends[2];
        QVERIFY(::pipe2(ends, O_NONBLOCK) == 0);
        const int before[]{::dup(STDOUT_FILENO), ::dup(STDERR_FILENO)};
        ::fcntl(ends[1], F_SETFL, 0);
        ::dup2(ends[1], STDOUT_FILENO);
        ::dup2(ends[1], STDERR_FILENO);
        ::close(ends[1]);
        const QtMessageHandler testHandler = qInstallMessageHandler(nullptr);
        Log::captureQtMessages();

        Log::print(u"错误: "_s + QString(5000, u'x'));
        qWarning("from Qt");
        char text[6000];
        const QString lines = QString::fromUtf8(text, ::read(ends[0], text, sizeof text));
        const auto flood = [] {
            for (int i = 0; i < 200; ++i) { // nobody reads
                Log::print(QString(1000, u'x'));
                qWarning("%s", QByteArray(100'000, 'x').constData());
            }
        };
        const std::unique_ptr<QThread> thread(QThread::create(flood));
        thread->start();
        flood();
        QVERIFY(thread->wait());
        while (::read(ends[0], text, sizeof text) > 0) {
        }
        ::close(ends[0]);
        Log::print(u"The reader has gone."_s);
        ::close(STDOUT_FILENO);
        QCOMPARE(::open("/dev/full", O_WRONLY), STDOUT_FILENO);
        Log::print(u"The disk is full."_s);

        qInstallMessageHandler(testHandler);
        ::dup2(before[0], STDOUT_FILENO);
        ::dup2(before[1], STDERR_FILENO);
        const QRegularExpression expected(
            u"^错误: x{5000}\n\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} TestPlatform\\[\\d+\\] from Qt\n$"_s);
        QVERIFY2(expected.match(lines).hasMatch(), qPrintable(lines));
        QCOMPARE(SystemClock().now().timeSpec(), Qt::LocalTime);
    }

    // Qt can neither make nor delete such a name. Others that read the same are beside it.
    void nameThatIsNotUtf8_isFound()
    {
        const QTemporaryDir folder;
        const std::string root = folder.path().toStdString();
        for (const char *name : {"/\xef\xbf\xbd", "/\xff", "/\xfe", "/\xfd"})
            QVERIFY(std::filesystem::create_directory(root + name));
        const std::string file = root + "/\xef\xbf\xbd/\xe4.wav";
        QVERIFY(::close(::creat(file.c_str(), 0600)) == 0);
        const QString text = QFile::decodeName(file.c_str());
        QCOMPARE(FilePath::existing(text), QByteArray::fromStdString(file));
        QVERIFY(!FilePath::existing(text + u"x"_s) && !FilePath::existing(folder.path() + QChar::Null));
        QVERIFY(!Resources(folder.path()).path(u""_s)); // which is the folder
        std::filesystem::remove_all(root);
    }

    void publishedMember_stillHasItsOldValueWhenItIsSaidToChange()
    {
        ObservableObject object;
        Published<int> member(&object, 1);
        QList<int> seen;
        connect(&object, &ObservableObject::objectWillChange, this, [&] { seen += member; });
        member = 2;
        member.modify([](int &value) { value = 3; });
        QCOMPARE(seen, (QList{1, 2}));
        QCOMPARE(member.value(), 3);
    }
};

QTEST_GUILESS_MAIN(TestPlatform)
#include "TestPlatform.moc"
