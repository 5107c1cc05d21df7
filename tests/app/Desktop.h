// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/AppDelegate.h"
#include "app/content/PrimaryContentController.h"
#include "app/state/KubeSplitViewController.h"
#include "app/window/ClusterWindowFrame.h"
#include "app/window/MainWindowController.h"
#include "pods/console/ConsoleTextView.h"
#include "pods/console/ConsoleViewController.h"
#include "pods/table/PodController.h"
#include "resources/table/ResourceTableView.h"
#include "support/OpenQuestion.h"
#include "support/Patience.h"

#include <QAction>
#include <QLabel>

/// The application and one window of it: what the user sees and does there. What they run on is made before
/// and goes behind them.
struct Desktop
{
    ~Desktop() { delegate.applicationWillTerminate(); }

    void openWindow()
    {
        delegate.newDocument();
        frame = delegate.mainWindow();
    }
    tidewright::MainWindowController &page() const { return *frame->currentPage(); }
    tidewright::KubeSplitViewController &state() const { return page().state(); }
    tidewright::PrimaryContentController &content() const { return page().primaryContentController(); }
    tidewright::SharedContentViewController &table() const { return *content().shownTable(); }
    tidewright::PodController &pods() const
    {
        return *qobject_cast<tidewright::PodController *>(
            content().tableControllerForScope(QStringLiteral("pod")));
    }
    QString console() const { return page().windowConsoleController().consoleTextView()->toPlainText(); }
    /// Types a line into the console and runs it.
    void type(const QString &line) const
    {
        QLineEdit *field = page().windowConsoleController().commandEntryTextField();
        field->setText(line);
        QTest::keyClick(field, Qt::Key_Return);
    }
    /// The command of that title in the menus.
    QAction &command(const QString &title) const
    {
        for (QAction *action : frame->findChildren<QAction *>()) {
            if (action->text().remove(u'&') == title) {
                return *action;
            }
        }
        qFatal("no command %s", qPrintable(title));
    }

    tidewright::test::OpenQuestion question() const { return tidewright::test::OpenQuestion::over(*frame); }
    void answer(const QString &title) const
    {
        QTRY_VERIFY(question());
        const tidewright::test::OpenQuestion asked = question();
        asked.press(title);
        QTRY_VERIFY(!asked);
    }
    /// Whether the question has a label that begins so, which says what and where.
    bool asks(const QString &text) const { return question().says(text); }

    tidewright::AppDelegate delegate;
    tidewright::ClusterWindowFrame *frame = nullptr;
};
