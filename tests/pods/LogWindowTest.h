// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "demo/DemoProcess.h"
#include "pods/logs/view/CombinedLogsViewController.h"
#include "pods/logs/view/CombinedLogsWindowController.h"
#include "resources/preview/PreviewFiles.h"

#include <QAbstractButton>
#include <QFile>
#include <QLabel>
#include <QPointer>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>

namespace tidewright::test {

/// A logs window with a folder of its own, for tests that derive from it.
class LogWindowTest
{
protected:
    void prepareFolder()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        setCacheDirectory(m_folder->path());
    }
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    CombinedLogsViewController &open(const std::vector<ContainerPair> &containers,
        const std::vector<ContainerPair> &workloads = {},
        const LogPlace &place = {{}, QStringLiteral("demo"), QStringLiteral("team")},
        const LogOptions &options = {})
    {
        m_window = new CombinedLogsWindowController;
        CombinedLogsViewController &content = m_window->contentController();
        content.containers = containers;
        content.workloads = workloads;
        content.kubeConfigPath = place.kubeConfig;
        content.context = place.context;
        content.nameSpace = place.nameSpace;
        content.options = options;
        m_window->show();
        m_window->activateWindow();
        return content;
    }
    QString labelWith(const QString &text) const
    {
        const auto labels = m_window->findChildren<QLabel *>();
        const auto found = std::find_if(labels.cbegin(), labels.cend(),
            [&](const QLabel *label) { return label->text().contains(text); });
        return found == labels.cend() ? QString() : (*found)->text();
    }
    QAbstractButton *buttonWith(const QString &text) const
    {
        const auto buttons = m_window->findChildren<QAbstractButton *>();
        const auto found = std::find_if(
            buttons.cbegin(), buttons.cend(), [&](const auto *one) { return one->text() == text; });
        return found == buttons.cend() ? nullptr : *found;
    }
    /// Paused, this count stands still once the streams have noticed.
    static qint64 linesSent(const DemoProcess &demo)
    {
        static const QRegularExpression count(QStringLiteral("\"logLines\":(\\d+)"));
        QByteArray answer;
        demo.control("{}", &answer);
        return count.match(QString::fromUtf8(answer)).captured(1).toLongLong();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QPointer<CombinedLogsWindowController> m_window;
};

} // namespace tidewright::test
