// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Diagnostics.h"
#include "support/TestSupport.h"

#include <QTest>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

class tst_diagnostics : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void nobodyWaitsForAReader_data()
    {
        QTest::addColumn<DiagnosticStream>("stream");
        QTest::addColumn<int>("descriptor");
        QTest::addColumn<bool>("isTerminal");
        QTest::newRow("standard output") << DiagnosticStream::StandardOutput << STDOUT_FILENO << false;
        QTest::newRow("standard error") << DiagnosticStream::StandardError << STDERR_FILENO << false;
        QTest::newRow("terminal") << DiagnosticStream::StandardOutput << STDOUT_FILENO << true;
    }
    void nobodyWaitsForAReader()
    {
        QFETCH(DiagnosticStream, stream);
        QFETCH(int, descriptor);
        QFETCH(bool, isTerminal);
        Pipe ends = Pipe::make();
        if (isTerminal) {
            ends.readEnd = FileDescriptor(::posix_openpt(O_RDWR | O_NOCTTY));
            QVERIFY(::grantpt(ends.readEnd.get()) == 0 && ::unlockpt(ends.readEnd.get()) == 0);
            ends.writeEnd = FileDescriptor(::open(::ptsname(ends.readEnd.get()), O_WRONLY | O_NOCTTY));
        }
        std::fflush(nullptr);
        const FileDescriptor before(::dup(descriptor));
        ::dup2(ends.writeEnd.get(), descriptor);
        const auto writeLines = [stream] {
            writeDiagnostic(u"first"_s, stream);
            for (int number = 0; number < 5'000; ++number) {
                writeDiagnostic(QString(997, u'.'), stream); // does not divide what a pipe or terminal holds
            }
            return true;
        };
        auto written = inBackground(writeLines);
        const bool ended = arrives(written);
        ::dup2(before.get(), descriptor);
        QVERIFY2(ended, "the writer waits for a reader");
        QByteArray read(1 << 20, '\0');
        ::fcntl(ends.readEnd.get(), F_SETFL, O_NONBLOCK);
        read.resize(std::max<ssize_t>(0, ::read(ends.readEnd.get(), read.data(), std::size_t(read.size()))));
        QVERIFY2(read.startsWith(isTerminal ? "first\r\n..." : "first\n..."), read.left(20).constData());
    }

    void ordinaryLinesAllArrive()
    {
        QString expected;
        const CapturedOutput output;
        for (int number = 0; number < 10'000; number += 100) {
            const QString line(number, u'a'); // also longer than what a pipe takes at once
            writeDiagnostic(line);
            expected += line + u'\n';
        }
        QCOMPARE(output.text(), expected);
    }
};

QTEST_APPLESS_MAIN(tst_diagnostics)
#include "tst_diagnostics.moc"
