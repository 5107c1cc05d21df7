// SPDX-License-Identifier: GPL-3.0-or-later
#include "external/DesktopApplications.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <gio/gdesktopappinfo.h>

#include <algorithm>
#include <memory>

namespace tidewright {

namespace {

struct Unref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
using AppInfo = std::unique_ptr<GAppInfo, Unref>;

std::vector<AppInfo> handlersOf(const QByteArray &type)
{
    GList *list = g_app_info_get_recommended_for_type(type.constData());
    std::vector<AppInfo> handlers;
    for (GList *link = list; link; link = link->next) {
        handlers.emplace_back(G_APP_INFO(link->data));
    }
    g_list_free(list);
    return handlers;
}

QByteArray typeOf(const QString &scheme)
{
    return "x-scheme-handler/" + scheme.toUtf8();
}

QStringList commandOf(GAppInfo *info)
{
    QStringList command;
    int count = 0;
    char **words = nullptr;
    const char *line = g_app_info_get_commandline(info);
    if (!line || !g_shell_parse_argv(line, &count, &words, nullptr)) {
        return command;
    }
    for (int i = 0; i < count; ++i) {
        QString word = QFile::decodeName(words[i]);
        const bool isFieldCode = word.size() == 2 && word.front() == u'%' && word != QLatin1String("%%");
        if (!isFieldCode) {
            command.append(word.replace(QLatin1String("%%"), QLatin1String("%")));
        }
    }
    g_strfreev(words);
    return command;
}

/// The argument after which the entry's terminal takes a command; "-e" when the entry does not say.
QString execArgumentOf(GAppInfo *info)
{
    for (const char *key : {"X-TerminalArgExec", "TerminalArgExec"}) {
        if (G_IS_DESKTOP_APP_INFO(info) && g_desktop_app_info_has_key(G_DESKTOP_APP_INFO(info), key)) {
            char *value = g_desktop_app_info_get_string(G_DESKTOP_APP_INFO(info), key);
            const QString argument = QString::fromUtf8(value);
            g_free(value);
            return argument;
        }
    }
    return QStringLiteral("-e");
}

} // namespace

bool isApplicationInstalled(const QString &desktopId)
{
    return std::unique_ptr<GDesktopAppInfo, Unref>(
               g_desktop_app_info_new(QFile::encodeName(desktopId).constData()))
        != nullptr;
}

bool hasSchemeHandler(const QString &scheme)
{
    return !handlersOf(typeOf(scheme)).empty();
}

std::optional<DesktopTerminal> schemeHandler(const QString &scheme)
{
    const std::vector<AppInfo> handlers = handlersOf(typeOf(scheme));
    if (handlers.empty()) {
        return std::nullopt;
    }
    // The default may also be one for files of any kind, which is no terminal.
    const AppInfo preferred(g_app_info_get_default_for_type(typeOf(scheme).constData(), FALSE));
    const auto isPreferred
        = [&](const AppInfo &info) { return preferred && g_app_info_equal(info.get(), preferred.get()); };
    const auto found = std::find_if(handlers.begin(), handlers.end(), isPreferred);
    GAppInfo *chosen = found == handlers.end() ? handlers.front().get() : found->get();
    const DesktopTerminal terminal{commandOf(chosen), execArgumentOf(chosen)};
    return terminal.command.isEmpty() ? std::nullopt : std::optional(terminal);
}

QString applicationFoldersProblem()
{
    const QStringList folders = QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
    const bool anyListed = std::any_of(folders.begin(), folders.end(), [](const QString &folder) {
        const QFileInfo info(folder);
        return info.isDir() && info.isReadable() && info.isExecutable();
    });
    return anyListed
        ? QString()
        : QLatin1String("No application folder can be listed: ") + folders.join(QLatin1String(", "));
}

} // namespace tidewright
