// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Diagnostics.h"
#include "support/TestSupport.h"

#include <QTest>

#include <fcntl.h>
#include <unistd.h>

using namespace tidewright;
using namespace tidewright::test;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

/// While it lives, a pipe that is full stands in for one of the process's own streams.
class UnreadStream
{
public:
    explicit UnreadStream(int descriptor)
        : m_descriptor(descriptor)
        , m_before(::dup(descriptor))
    {
        std::fflush(nullptr);
        ::dup2(m_pipe.writeEnd.get(), descriptor);
        m_pipe.writeEnd.close();
    }
    ~UnreadStream() { restore(); }
    UnreadStream(const UnreadStream &) = delete;
    UnreadStream &operator=(const UnreadStream &) = delete;

    void restore()
    {
        if (m_before >= 0) {
            ::dup2(m_before, m_descriptor);
            ::close(std::exchange(m_before, -1));
        }
    }
    /// All that is in it until nothing more comes.
    QByteArray read() const
    {
        QByteArray all;
        QByteArray piece(65'536, Qt::Uninitialized);
        ::fcntl(m_pipe.readEnd.get(), F_SETFL, O_NONBLOCK);
        for (;;) {
            const bool isAllThere = flushDiagnostics(1ms);
            const ssize_t count = ::read(m_pipe.readEnd.get(), piece.data(), std::size_t(piece.size()));
            if (count > 0) {
                all.append(piece.constData(), count);
            } else if (isAllThere) {
                return all;
            }
        }
    }

private:
    Pipe m_pipe = fullPipe();
    int m_descriptor;
    int m_before;
};

} // namespace

class tst_diagnostics : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void nobodyWaitsForAReader_data()
    {
        QTest::addColumn<DiagnosticStream>("stream");
        QTest::addColumn<int>("descriptor");
        QTest::newRow("standard output") << DiagnosticStream::StandardOutput << STDOUT_FILENO;
        QTest::newRow("standard error") << DiagnosticStream::StandardError << STDERR_FILENO;
    }
    void nobodyWaitsForAReader()
    {
        QFETCH(DiagnosticStream, stream);
        QFETCH(int, descriptor);
        constexpr int lines = 20'000;
        const QByteArray filling(996, '.');
        bool isFlushed = true;
        QByteArray read;
        {
            UnreadStream unread(descriptor);
            auto written = inBackground([&] {
                for (int number = 0; number < lines; ++number) {
                    writeDiagnostic(QString::fromUtf8(filling), stream);
                }
                std::fflush(nullptr); // as at the end of a process
                return true;
            });
            const bool ended = arrives(written);
            isFlushed = flushDiagnostics(50ms);
            if (!ended) {
                unread.restore();
                QFAIL("the writer waits for a reader");
            }
            read = unread.read();
            writeDiagnostic(u"last"_s, stream);
            read += unread.read();
        }
        QVERIFY(!isFlushed);
        read.remove(0, read.lastIndexOf('x') + 1); // what the pipe was filled with
        const qsizetype kept = read.count(filling);
        QVERIFY2(kept > 4'000 && kept < 10'000, QByteArray::number(kept).constData());
        const QByteArray note = '\n' + QByteArray::number(lines - kept) + " lines dropped\nlast\n";
        QVERIFY2(read.endsWith(note), read.right(100).constData());
    }

    void ordinaryLinesAllArrive()
    {
        QByteArray expected;
        QString printed;
        {
            const CapturedOutput output;
            for (int number = 0; number < 10'000; ++number) {
                writeDiagnostic(QString::number(number));
                expected += QByteArray::number(number) + '\n';
            }
            QVERIFY(flushDiagnostics(deadline));
            printed = output.text();
        }
        QCOMPARE(printed.toUtf8(), expected);
    }
};

QTEST_APPLESS_MAIN(tst_diagnostics)
#include "tst_diagnostics.moc"
