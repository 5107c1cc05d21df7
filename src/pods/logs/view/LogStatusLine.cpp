// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/LogStatusLine.h"

#include "platform/text/DisplayText.h"
#include "pods/logs/view/CombinedLogsViewController.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QToolButton>

#include <algorithm>

namespace tidewright {

namespace {

/// How the streams are doing, where that is not simply well.
QStringList streamParts(const CombinedLogsViewController &content)
{
    using Window = LogStatusLine;
    const auto &sources = content.sources();
    const auto count = [&](auto what) { return std::count_if(sources.cbegin(), sources.cend(), what); };
    QStringList parts;
    if (const PodFollower *follower = content.follower(); follower && !follower->problem().isEmpty()) {
        parts.append(Window::tr("the pods are not known: %1").arg(follower->problem().section(u'\n', 0, 0)));
    }
    const auto hasChoice = [](const LogSource &source) { return source.choice.has_value(); };
    if (const auto chosen = count(hasChoice); chosen == 1) {
        const auto source = std::find_if(sources.cbegin(), sources.cend(), hasChoice);
        const ContainerPair &pair = content.containers[static_cast<std::size_t>(source - sources.cbegin())];
        // The number first: a narrow window cuts the end.
        parts.append(Window::tr("only 1 of the %1 pods of %2 is followed: %3")
                         .arg(source->choice->pods, pair.pod, source->choice->pod));
    } else if (chosen > 1) {
        parts.append(Window::tr("of %1 sources only one pod of several is followed").arg(chosen));
    }
    if (const auto ended = count([](const LogSource &source) { return source.ended; }); ended > 0) {
        parts.append(ended == std::ssize(sources)
                ? Window::tr("all streams have ended")
                : Window::tr("%1 of %2 streams have ended").arg(ended).arg(sources.size()));
    }
    if (const auto failed = count([](const LogSource &source) { return source.failure.has_value(); })) {
        parts.append(Window::tr("%1 with errors").arg(failed));
    }
    return parts;
}

} // namespace

QString countedText(qint64 number)
{
    return QLocale().toString(number);
}

QString bytesText(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

LogStatusLine::LogStatusLine(CombinedLogsViewController &content)
    : m_content(content)
    , m_status(new QLabel)
    , m_notice(new QLabel)
    , m_progress(new QProgressBar)
    , m_following(new QLabel(tr("Following")))
    , m_followRefused(new QToolButton)
    , m_followAgain(new QToolButton)
    , m_jump(new QToolButton)
{
    // What is said here holds file names and texts of other programs.
    m_status->setTextFormat(Qt::PlainText);
    m_notice->setTextFormat(Qt::PlainText);
    m_status->setAccessibleName(tr("Status"));
    m_status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_notice->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_progress->setMaximumWidth(160);
    m_progress->hide();
    m_following->setToolTip(tr("The view follows the text; scroll up to stop it."));
    buildButtons();
    build();
    connect(&content, &CombinedLogsViewController::sourcesChanged, this, &LogStatusLine::refresh);
    connect(&content.document(), &LogDocument::appended, this, &LogStatusLine::refresh);
    connect(&content.document(), &LogDocument::replaced, this, &LogStatusLine::refresh);
    LogView *view = content.logTextView();
    connect(&view->scroll(), &LogScroll::followingChanged, this, &LogStatusLine::refresh);
    connect(&view->selection(), &LogSelection::noticed, this, &LogStatusLine::setNotice);
    refresh();
}

void LogStatusLine::buildButtons()
{
    const auto label = [](QToolButton *button, const QString &text, const QString &tip) {
        button->setText(text);
        button->setToolTip(display_text::toolTip(tip));
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    };
    label(m_followRefused, tr("Follow All Containers"),
        tr("kubectl follows five containers at most unless it is asked for more."));
    label(m_followAgain, tr("Follow Again"),
        tr("Follow the streams that have ended once more, from the moment on at which they ended."));
    label(m_jump, tr("Jump to End ↓"), tr("Scroll to the end and follow the text (Ctrl+End)"));
    m_jump->setAutoRaise(true);
    connect(m_followRefused, &QToolButton::clicked, &m_content, &CombinedLogsViewController::followRefused);
    connect(m_followAgain, &QToolButton::clicked, &m_content, &CombinedLogsViewController::followAgain);
    connect(m_jump, &QToolButton::clicked, &m_content, [this] {
        m_content.logTextView()->scroll().follow();
        m_content.logTextView()->setFocus();
    });
}

void LogStatusLine::build()
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 2, 8, 2);
    layout->addWidget(makePlaceLabel());
    layout->addWidget(m_status);
    layout->addStretch(1);
    for (QWidget *part : {static_cast<QWidget *>(m_notice), static_cast<QWidget *>(m_progress),
             static_cast<QWidget *>(m_followRefused), static_cast<QWidget *>(m_followAgain),
             static_cast<QWidget *>(m_following), static_cast<QWidget *>(m_jump)}) {
        layout->addWidget(part);
    }
    // The same with the label as with the button: the text above must not move.
    setMinimumHeight(m_jump->sizeHint().height() + 4);
    m_status->setMinimumWidth(60);
    m_status->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    layout->setStretchFactor(m_status, 4);
}

/// Where the text comes from, also when the title is too long for its bar.
QWidget *LogStatusLine::makePlaceLabel()
{
    constexpr int widest = 320;
    auto *label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setAccessibleName(tr("Context and Namespace"));
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    label->setContentsMargins(0, 0, 12, 0);
    connect(&m_content, &CombinedLogsViewController::placeKnown, label, [this, label] {
        const QString place = display_text::clean(m_content.place());
        label->setText(label->fontMetrics().elidedText(place, Qt::ElideMiddle, widest));
        label->setToolTip(display_text::toolTip(place));
    });
    return label;
}

QString LogStatusLine::text() const
{
    return m_status->text();
}

void LogStatusLine::setNotice(const QString &sentence)
{
    m_notice->setText(sentence);
}

void LogStatusLine::setProgress(int percent)
{
    m_progress->setVisible(percent >= 0);
    m_progress->setValue(std::max(0, percent));
}

QStringList LogStatusLine::parts() const
{
    const LogDocument &document = m_content.document();
    QStringList parts;
    if (document.size() == 0) {
        parts.append(tr("No text yet"));
    } else {
        parts.append(tr("%1 lines, %2").arg(countedText(document.lines()), bytesText(document.size())));
    }
    if (document.isNarrowed()) {
        const qint64 size = document.size();
        parts.append(document.examined() < size - LogScan::usualSpan
                ? tr("%1 shown so far (%2 %)")
                      .arg(countedText(document.shownLines()))
                      .arg(document.examined() * 100 / size)
                : tr("%1 shown").arg(countedText(document.shownLines())));
    }
    parts += streamParts(m_content);
    if (!document.problem().isEmpty()) {
        parts.prepend(document.isFull() ? tr("Stopped: %1").arg(document.problem()) : document.problem());
    }
    return parts;
}

void LogStatusLine::refresh()
{
    const QString text = parts().join(QStringLiteral(" · "));
    if (text != m_status->text()) {
        m_status->setText(text);
        m_status->setToolTip(display_text::toolTip(text));
    }
    const auto &sources = m_content.sources();
    m_followRefused->setVisible(std::any_of(sources.cbegin(), sources.cend(),
        [](const LogSource &source) { return !source.refusedContainers().isEmpty(); }));
    const bool following = m_content.logTextView()->scroll().isFollowing();
    m_following->setVisible(following);
    m_jump->setVisible(!following);
    m_followAgain->setVisible(m_content.canFollowAgain());
}

} // namespace tidewright
