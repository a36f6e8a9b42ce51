#include "platform/Log.h"

#include <QRegularExpression>
#include <QTest>
#include <QThread>

#include <fcntl.h>
#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

class TestLog final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A write that blocks, or one that fails with SIGPIPE, would not let this come to its end.
    void line_isWrittenAtOnceOrDropped()
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
        const auto length = ::read(ends[0], text, sizeof text);
        const auto flood = [] {
            for (int i = 0; i < 1000; ++i) { // nobody reads
                Log::print(QString(1000, u'x'));
                qWarning("%s", QByteArray(5000, 'x').constData());
            }
        };
        const std::unique_ptr<QThread> thread(QThread::create(flood));
        thread->start();
        flood();
        QVERIFY(thread->wait());
        ::close(ends[0]);
        Log::print(u"The reader has gone."_s);

        qInstallMessageHandler(testHandler);
        ::dup2(before[0], STDOUT_FILENO);
        ::dup2(before[1], STDERR_FILENO);
        const QRegularExpression expected(
            u"^错误: x{5000}\n\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} TestLog\\[\\d+\\] from Qt\n$"_s);
        QVERIFY(expected.match(QString::fromUtf8(text, length)).hasMatch());
    }
};

QTEST_GUILESS_MAIN(TestLog)
#include "TestLog.moc"
