// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/FileArguments.h"

#include "platform/text/DisplayText.h"
#include "resources/changes/ClusterChange.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace tidewright {

namespace {

/// kubectl reads the value of -f as one record of comma-separated values, which a line end closes.
QString asListElement(QString path)
{
    static const QRegularExpression special(QStringLiteral("[,\"\r\n]"));
    if (path.contains(special)) {
        path.replace(QLatin1Char('"'), QLatin1String("\"\""));
        return QLatin1Char('"') + path + QLatin1Char('"');
    }
    return path;
}

} // namespace

bool canTakeFilesIn(WindowState &window, const QString &notDone)
{
    QString reason = changeObstacle(window);
    if (reason.isEmpty()) {
        reason = window.loadingHint();
    }
    if (reason.isEmpty() && window.currentNamespace() == allNamespaces) {
        reason = QCoreApplication::translate("CreateFromFiles",
            "choose a namespace first. While all namespaces are shown, it is not clear where objects go "
            "whose "
            "files name none.");
    }
    return allows(window, notDone, reason);
}

std::optional<QStringList> fileArguments(
    WindowState &window, const QStringList &paths, const QString &notDone)
{
    QStringList elements;
    for (const QString &path : paths) {
        if (path.contains(QLatin1String("\r\n"))) {
            refuseChange(window, notDone,
                QCoreApplication::translate("CreateFromFiles",
                    "kubectl cannot be told of the file %1: it reads a carriage return before a line feed as "
                    "the line feed alone.")
                    .arg(display_text::withoutLineEnds(path)));
            return std::nullopt;
        }
        elements.append(asListElement(path));
    }
    return QStringList{QStringLiteral("-R"), QStringLiteral("-f"), elements.join(QLatin1Char(','))};
}

} // namespace tidewright
