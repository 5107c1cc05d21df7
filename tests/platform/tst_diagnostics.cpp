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
    /// A terminal has room for a byte before it has room for a line.
    void nobodyWaitsForATerminal()
    {
        const FileDescriptor reader(::posix_openpt(O_RDWR | O_NOCTTY));
        QVERIFY(::grantpt(reader.get()) == 0 && ::unlockpt(reader.get()) == 0);
        const FileDescriptor terminal(::open(::ptsname(reader.get()), O_WRONLY | O_NOCTTY));
        std::fflush(nullptr);
        const FileDescriptor before(::dup(STDOUT_FILENO));
        ::dup2(terminal.get(), STDOUT_FILENO);
        auto written = inBackground([] {
            writeDiagnostic(u"first"_s);
            for (int number = 0; number < 5'000; ++number) {
                writeDiagnostic(QString(997, u'.')); // does not divide what a terminal holds
            }
            return true;
        });
        const bool ended = arrives(written);
        ::dup2(before.get(), STDOUT_FILENO);
        QVERIFY2(ended, "the writer waits for a reader");
        QByteArray read(10, '\0');
        QCOMPARE(::read(reader.get(), read.data(), std::size_t(read.size())), ssize_t(read.size()));
        QCOMPARE(read, "first\r\n...");
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
