#include "platform/Log.h"

#include <QTest>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class TestLog final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What cannot be written would stop or end a program that just wrote: it would not come to the end here.
    void print_writesTheLineAtOnce_orDropsIt()
    {
        int ends[2];
        QVERIFY(::pipe2(ends, O_NONBLOCK) == 0);
        const int before = ::dup(STDOUT_FILENO);
        ::fcntl(ends[1], F_SETFL, 0);
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[1]);

        Log::print(u"错误: "_s);
        char text[100];
        const auto length = ::read(ends[0], text, sizeof text);
        for (int i = 0; i < 1000; ++i) // nobody reads
            Log::print(QString(1000, u'x'));
        ::close(ends[0]);
        Log::print(u"The reader has gone."_s);

        ::dup2(before, STDOUT_FILENO);
        ::close(before);
        QCOMPARE(QString::fromUtf8(text, length), u"错误: \n"_s);
    }
};

QTEST_GUILESS_MAIN(TestLog)
#include "TestLog.moc"
