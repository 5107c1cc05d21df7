// SPDX-License-Identifier: GPL-3.0-or-later
// bench-logs: 100 MB of log text in pieces, in the log view and in the toolkit's plain text widget.
#include "Measure.h"

#include "platform/threads/MainQueue.h"
#include "pods/logs/view/LogView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QPlainTextEdit>
#include <QScrollBar>

#include <algorithm>
#include <array>
#include <cstdio>
#include <malloc.h>
#include <random>

using namespace tidewright;
using namespace tidewright::bench;

namespace {

constexpr qsizetype wantedBytes = 100'000'000;
constexpr qsizetype pieceUnits = 4096;
constexpr qsizetype bytesBetweenFrames = 1'000'000;
constexpr int rounds = 7;
constexpr int changes = 60; // in a round
constexpr double frame = 1.0 / 60;
constexpr QSize viewSize(1200, 800);

/// Log lines as a reader of pipes gets them: pieces that end anywhere, some of them coloured, some long.
QStringList makePieces()
{
    std::mt19937 random(1);
    QString text;
    QStringList pieces;
    for (qsizetype bytes = 0, number = 0; bytes < wantedBytes; ++number) {
        QString line = QStringLiteral("2026-05-04T10:11:12.%1Z level=info request=%2 took=%3ms")
                           .arg(number % 1000, 3, 10, QLatin1Char('0'))
                           .arg(random(), 0, 16)
                           .arg(random() % 900);
        if (number % 20 == 7) {
            line = QStringLiteral("\u001b[33m") + line + QStringLiteral("\u001b[0m größer 日本");
        } else if (number % 50 == 0) {
            line += QString(static_cast<qsizetype>(1000 + random() % 2000), QLatin1Char('d'));
        }
        text += line + QLatin1Char('\n');
        while (text.size() >= pieceUnits) {
            pieces.append(text.left(pieceUnits));
            text.remove(0, pieceUnits);
            bytes += pieces.back().toUtf8().size();
        }
    }
    return pieces;
}

/// Kilobytes of a line of the process's status.
double statusBytes(const QByteArray &name)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (line.startsWith(name)) {
                return line.mid(name.size() + 1).simplified().split(' ').first().toDouble() * 1024;
            }
        }
    }
    std::fprintf(stderr, "%s is not to be had\n", name.constData());
    std::exit(2);
}

double anonymousBytes()
{
    ::malloc_trim(0);
    return statusBytes("RssAnon");
}

template <typename Append> double appendSeconds(const QStringList &pieces, Append append)
{
    const double start = threadCpuSeconds();
    qsizetype sinceFrame = 0;
    for (const QString &piece : pieces) {
        append(piece);
        sinceFrame += piece.size();
        if (sinceFrame >= bytesBetweenFrames) {
            sinceFrame = 0;
            QApplication::processEvents();
        }
    }
    QApplication::processEvents();
    return threadCpuSeconds() - start;
}

/// The longest CPU time that a change and the painting behind it take, the median of several rounds; on the
/// wall, other programs would count too.
template <typename Change> double longestFrame(LogView &view, Change change)
{
    std::vector<double> longest;
    for (int round = 0; round < rounds; ++round) {
        longest.push_back(0);
        for (int i = 0; i < changes; ++i) {
            const double start = threadCpuSeconds();
            change(i);
            view.viewport()->repaint();
            longest.back() = std::max(longest.back(), threadCpuSeconds() - start);
        }
    }
    return median(longest);
}

void measureFrames(Report &report, LogView &view, const char *mode)
{
    std::mt19937 random(2);
    const auto jump = [&](int) {
        view.verticalScrollBar()->setValue(
            static_cast<int>(random() % static_cast<unsigned>(view.verticalScrollBar()->maximum())));
    };
    report.ratio(std::string("longest frame, scrolling anywhere, ") + mode, longestFrame(view, jump), frame,
        1.0, "ms");
    report.ratio(std::string("longest frame, resizing, ") + mode,
        longestFrame(view, [&](int i) { view.resize(viewSize.width() - 7 * i, 500 + 5 * i); }), frame, 1.0,
        "ms");
    view.resize(viewSize);
}

QStringList logFolders()
{
    return {QString::fromLocal8Bit(qgetenv("XDG_CACHE_HOME")), QStringLiteral("/var/tmp")};
}

/// Lines of 5 MB each, of characters that need a text layout.
void measureLongLines(Report &report)
{
    LogDocument document(logFolders());
    LogView view(document);
    view.resize(viewSize);
    view.show();
    QApplication::processEvents();
    for (const QString &unit : {QStringLiteral("größere Warteschlange: 日本語のメッセージが届きました, "),
             QStringLiteral("ההודעה התקבלה ונשמרה בהצלחה, took=12ms ")}) {
        document.append(0, unit.toUtf8().repeated(5'000'000 / unit.toUtf8().size()));
        document.append(0, "\n");
    }
    document.commit();
    view.scroll().setWrapping(true);
    view.scroll().follow();
    measureFrames(report, view, "5 MB lines, wrapped");
    view.scroll().setWrapping(false);
    measureFrames(report, view, "5 MB lines, not wrapped");
}

/// Short lines need more of an index for each byte, and even more when each comes from another source.
void measureShortLines(Report &report)
{
    for (const auto &[digits, sources] : {std::pair(4, 1), std::pair(14, 6)}) {
        const double before = anonymousBytes();
        LogDocument document(logFolders());
        for (int i = 0; i < 3'000'000; ++i) {
            document.append(i % sources, QStringLiteral("line %1\n").arg(i % 1000, digits).toUtf8());
        }
        document.commit();
        report.ratio("anonymous memory / bytes, lines of " + std::to_string(digits + 6) + " bytes, "
                + std::to_string(sources) + " sources in turn",
            (anonymousBytes() - before) / 1e9, double(document.size()) / 1e9, 0.25, "MB");
    }
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    mainQueue();
    const QStringList pieces = makePieces();
    Report report;
    double ours = 0;
    {
        LogDocument document(logFolders());
        LogView view(document);
        view.resize(viewSize);
        view.show();
        QApplication::processEvents();
        const double before = anonymousBytes();
        int next = 0;
        ours = appendSeconds(
            pieces, [&](const QString &piece) { document.append(next++ % 6, piece.toUtf8()); });
        document.commit();
        view.scroll().follow();
        if (!document.problem().isEmpty()) {
            std::fprintf(stderr, "%s\n", qPrintable(document.problem()));
            return 2;
        }
        std::printf(
            "%.1f MB, %lld lines\n", double(document.size()) / 1e6, static_cast<long long>(document.lines()));
        report.ratio("anonymous memory / bytes of log kept", (anonymousBytes() - before) / 1e9,
            double(document.size()) / 1e9, 0.25, "MB");
        measureFrames(report, view, "wrapped");
        view.scroll().setWrapping(false);
        measureFrames(report, view, "not wrapped");
    }
    measureLongLines(report);
    measureShortLines(report);
    QPlainTextEdit edit;
    edit.resize(viewSize);
    edit.show();
    QApplication::processEvents();
    const double reference
        = appendSeconds(pieces, [&](const QString &piece) { edit.appendPlainText(piece); });
    report.ratio("append to the log / a fiftieth of QPlainTextEdit's, CPU", ours, reference / 50, 1.0, "ms");
    std::fflush(nullptr);
    std::_Exit(report.allKept() ? 0 : 1);
}
