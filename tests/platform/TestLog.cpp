#include "platform/Log.h"

#include <QTest>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

class TestLog final : public QObject
{
    Q_OBJECT

private:
    int before = -1;
    int reader = -1;

private Q_SLOTS:
    // Standard output is a pipe whose reader the test is.
    void init()
    {
        int ends[2];
        QVERIFY(::pipe2(ends, O_NONBLOCK) == 0);
        reader = ends[0];
        before = ::dup(STDOUT_FILENO);
        ::fcntl(ends[1], F_SETFL, 0);
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[1]);
    }

    void cleanup()
    {
        ::dup2(before, STDOUT_FILENO);
        ::close(before);
        ::close(reader);
    }

    void print_writesTheLineAtOnce()
    {
        Log::print(u"错误: "_s);
        char text[100];
        const auto length = ::read(reader, text, sizeof text);
        QCOMPARE(QString::fromUtf8(text, length), u"错误: \n"_s);
    }

    // Either would stop or end a program that just wrote: this one would not come to the end of the test.
    void print_dropsTheLine_data()
    {
        QTest::addColumn<bool>("isReaderThere");
        QTest::newRow("when nobody reads") << true;
        QTest::newRow("when the reader has gone") << false;
    }
    void print_dropsTheLine()
    {
        QFETCH(bool, isReaderThere);
        if (!isReaderThere)
            ::close(std::exchange(reader, -1));
        const QString line(1000, u'x');
        for (int i = 0; i < 1000; ++i)
            Log::print(line);
    }
};

QTEST_GUILESS_MAIN(TestLog)
#include "TestLog.moc"
