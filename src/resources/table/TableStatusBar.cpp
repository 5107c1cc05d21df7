// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/TableStatusBar.h"

#include "platform/text/DisplayText.h"
#include "resources/widgets/NamedImages.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace tidewright {

namespace {

constexpr qint64 longLoadSeconds = 3;

} // namespace

TableStatusBar::TableStatusBar(QWidget *parent)
    : QWidget(parent)
    , m_counts(new QLabel)
    , m_warningImage(new QLabel)
    , m_warning(new QLabel)
    , m_liveImage(new QLabel)
    , m_time(new QLabel)
    , m_stop(new QToolButton)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 2, 10, 2);
    layout->setSpacing(8);
    layout->addWidget(m_counts);
    layout->addSpacing(8);
    layout->addWidget(m_warningImage);
    layout->addWidget(m_warning, 1);
    layout->addWidget(m_stop);
    layout->addWidget(m_time);
    layout->addWidget(m_liveImage);
    // Seconds that count up must not move the button beside them.
    m_time->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_time->setMinimumWidth(
        m_time->fontMetrics().horizontalAdvance(tr("As of %1").arg(QStringLiteral("00:00:00")))
        + m_time->fontMetrics().horizontalAdvance(QStringLiteral("  ·  ") + tr("Loading for %1 s").arg(9999))
        + 24);
    for (QLabel *label : {m_counts, m_warning, m_time}) {
        label->setTextFormat(Qt::PlainText);
    }
    m_warning->setMinimumWidth(20);
    m_warning->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_warningImage->setFixedWidth(14);
    m_liveImage->setFixedWidth(14);
    m_counts->setAccessibleName(tr("Row Count"));
    m_time->setAccessibleName(tr("Rows As Of"));
    m_stop->setText(tr("Stop"));
    m_stop->setToolTip(tr("Stop loading (Esc); the rows stay as they are"));
    m_stop->setAutoRaise(true);
    QSizePolicy kept = m_stop->sizePolicy(); // its place stays, so that nothing moves when it comes
    kept.setRetainSizeWhenHidden(true);
    m_stop->setSizePolicy(kept);
    m_stop->hide();
    connect(m_stop, &QToolButton::clicked, this, &TableStatusBar::stopRequested);
    m_tick.setInterval(1000);
    connect(&m_tick, &QTimer::timeout, this, &TableStatusBar::updateTime);
}

void TableStatusBar::setCounts(const QString &text)
{
    m_counts->setText(text);
}

void TableStatusBar::setWarning(const QString &sentence, const QString &details)
{
    m_warning->setText(display_text::name(sentence));
    m_warning->setToolTip(display_text::toolTip(details));
    m_warningImage->setPixmap(
        sentence.isEmpty() ? QPixmap() : namedImage(QStringLiteral("warning")).pixmap(14, 14));
}

void TableStatusBar::setAsOf(const QDateTime &time)
{
    m_asOf = time;
    updateTime();
}

void TableStatusBar::setFollowing(TableLoader::Following following, const QString &reason)
{
    using Following = TableLoader::Following;
    if (following != m_following) {
        m_following = following;
        const QString image = following == Following::Live ? QStringLiteral("NSStatusAvailable")
            : following == Following::Reconnecting         ? QStringLiteral("NSStatusPartiallyAvailable")
                                                           : QString();
        m_liveImage->setPixmap(image.isEmpty() ? QPixmap() : namedImage(image).pixmap(12, 12));
    }
    QString toolTip = reason;
    if (following == Following::Live) {
        toolTip = tr("Every change in the cluster is shown as it happens.");
    } else if (following == Following::Refused) {
        toolTip = tr("No live updates here; the objects are listed again and again.") + QLatin1Char('\n')
            + reason;
    } else if (following == Following::Paused) {
        toolTip = tr("Live updates go on once the table is shown.");
    } else if (following == Following::Behind) {
        toolTip
            = tr("Something has changed since. Only kubectl can list these objects, and that takes a while.");
    }
    m_time->setToolTip(display_text::toolTip(toolTip));
    updateTime();
}

void TableStatusBar::setLoadingSince(const QDateTime &start)
{
    m_loadingSince = start;
    if (start.isValid()) {
        m_tick.start();
    } else {
        m_tick.stop();
    }
    updateTime();
}

QString TableStatusBar::timeText() const
{
    return m_time->text();
}

void TableStatusBar::updateTime()
{
    const qint64 seconds = m_loadingSince.isValid() ? m_loadingSince.secsTo(QDateTime::currentDateTime()) : 0;
    const bool isLong = seconds >= longLoadSeconds;
    QString text;
    if (m_following == TableLoader::Following::Live) {
        text = tr("Live");
    } else if (m_asOf.isValid()) {
        const bool isToday = m_asOf.date() == QDate::currentDate();
        const QString time = m_asOf.toString(isToday ? u"HH:mm:ss" : u"yyyy-MM-dd HH:mm:ss");
        text = m_following == TableLoader::Following::Reconnecting ? tr("Reconnecting… as of %1").arg(time)
            : m_following == TableLoader::Following::Refused       ? tr("Not live  ·  As of %1").arg(time)
                                                                   : tr("As of %1").arg(time);
    }
    if (isLong) {
        text += (text.isEmpty() ? QString() : QStringLiteral("  ·  ")) + tr("Loading for %1 s").arg(seconds);
    }
    m_time->setText(text);
    m_stop->setVisible(isLong);
}

} // namespace tidewright
