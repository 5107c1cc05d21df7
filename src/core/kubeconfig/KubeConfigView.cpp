// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/kubeconfig/KubeConfigView.h"

#include "platform/desktop/Bundle.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStandardPaths>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidewright {

namespace {

const auto folderName = QStringLiteral("/com.brindle.Tidewright/views");
const auto lockSuffix = QStringLiteral(".lock"); // what kubectl makes beside a kubeconfig that it writes

/// The runtime folder goes when the user logs out; a terminal may live longer, in a session of its own.
QString lastingFolder()
{
    return bundle::cachesFolder() + folderName;
}

QString runtimeFolder()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return folder.isEmpty() ? lastingFolder() : folder + folderName;
}

QByteArray fileContents(const KubeConfigContents &contents, const QString &context, const QString &nameSpace,
    const KubeConfigView::Options &options)
{
    QJsonArray stanzas;
    for (auto entry = contents.contexts.begin(); entry != contents.contexts.end(); ++entry) {
        const bool isCurrent = entry.key() == context;
        if (!isCurrent && options.holds == KubeConfigView::Holds::OneContext) {
            continue;
        }
        QJsonObject stanza = entry.value();
        stanza[QLatin1String("namespace")]
            = isCurrent ? options.firstNamespace.value_or(nameSpace) : contents.nameSpace(entry.key());
        stanzas.append(
            QJsonObject{{QStringLiteral("name"), entry.key()}, {QStringLiteral("context"), stanza}});
    }
    return QJsonDocument(
        QJsonObject{{QStringLiteral("apiVersion"), QStringLiteral("v1")},
            {QStringLiteral("kind"), QStringLiteral("Config")},
            {QStringLiteral("current-context"), options.firstContext.value_or(context)},
            {QStringLiteral("contexts"), stanzas}, {QStringLiteral("clusters"), QJsonArray()},
            {QStringLiteral("users"), QJsonArray()}})
        .toJson();
}

QString lastError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

/// Opens a new file under the lock that keeps it from being swept away; closed, with errno set, when that
/// failed.
FileDescriptor newFile(const QString &folder, QString &path)
{
    QDir().mkpath(folder);
    QByteArray name = QFile::encodeName(folder);
    ::chmod(name.constData(), S_IRWXU);
    name += "/view-XXXXXX";
    FileDescriptor file(::mkostemp(name.data(), O_CLOEXEC)); // readable by its owner alone
    if (file.isOpen()) {
        path = QFile::decodeName(name);
        ::flock(file.get(), LOCK_SH);
    }
    return file;
}

/// Stands in the places of files whose program has ended, one and the same for all of them: what that program
/// has left running in the background would find the user's own files alone there, which may lead to another
/// cluster. Nobody may write it, and it is locked for as long as this process lives.
class DeadEnd
{
public:
    /// Puts it in the place of the file; false when that failed.
    static bool replace(const QString &path)
    {
        static std::mutex mutex;
        static DeadEnd &deadEnd = *new DeadEnd; // threads outlive what is static
        const std::lock_guard lock(mutex);
        const QByteArray file = QFile::encodeName(path);
        const QByteArray beside = file + ".end";
        return (deadEnd.link(beside) || (deadEnd.make() && deadEnd.link(beside)))
            && std::rename(beside.constData(), file.constData()) == 0;
    }

private:
    bool link(const QByteArray &name) const
    {
        return m_file.isOpen() && ::link(QFile::encodeName(m_path).constData(), name.constData()) == 0;
    }
    bool make()
    {
        const QByteArray text
            = fileContents({}, QStringLiteral("(the program that this was for has ended)"), {}, {});
        FileDescriptor file = newFile(runtimeFolder(), m_path);
        const bool isWhole = file.isOpen()
            && ::write(file.get(), text.constData(), std::size_t(text.size())) == text.size()
            && ::fchmod(file.get(), S_IRUSR) == 0;
        m_file = isWhole ? std::move(file) : FileDescriptor();
        return isWhole;
    }

    QString m_path;
    FileDescriptor m_file;
};

/// One that has just been made may still be on its way to the terminal that will hold it.
bool isFresh(const QFileInfo &file)
{
    constexpr qint64 secondsToStart = 600;
    return file.lastModified().secsTo(QDateTime::currentDateTime()) < secondsToStart;
}

void removeUnused(const QString &path)
{
    const FileDescriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (file.isOpen() && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
        QFile::remove(path);
    }
}

} // namespace

std::shared_ptr<const KubeConfigView> KubeConfigView::make(const KubeConfigContents &contents,
    const QString &context, const QString &nameSpace, QString &problem, const Options &options)
{
    const std::shared_ptr<KubeConfigView> view(new KubeConfigView);
    view->m_context = context;
    view->m_nameSpace = nameSpace;
    view->m_lifetime = options.lifetime;
    view->m_isForeign = options.holds == Holds::AllContexts;
    const QString folder = options.lifetime == Lifetime::OnItsOwn ? lastingFolder() : runtimeFolder();
    const QByteArray text = fileContents(contents, context, nameSpace, options);
    view->m_file = newFile(folder, view->m_path);
    errno = view->m_file.isOpen() ? ENOSPC : errno; // of a write that ends short without a reason
    if (view->m_path.contains(QLatin1Char(':'))) {
        problem = QStringLiteral("the folder %1 has a colon in its name, which separates files for kubectl")
                      .arg(folder);
    } else if (!view->m_file.isOpen()
        || ::write(view->m_file.get(), text.constData(), std::size_t(text.size())) != text.size()) {
        problem = QStringLiteral("no file could be written in %1: %2").arg(folder, lastError());
    } else {
        return view;
    }
    view->m_lifetime = Lifetime::WithHolder;
    view->m_isForeign = false;
    return nullptr;
}

KubeConfigView::~KubeConfigView()
{
    if (m_lifetime == Lifetime::WithHolder && m_file.isOpen()) {
        if (!m_isForeign || !DeadEnd::replace(m_path)) {
            QFile::remove(m_path);
        }
        QFile::remove(m_path + lockSuffix);
    }
}

QString KubeConfigView::inFrontOf(const QString &rest) const
{
    return rest.isEmpty() ? m_path : m_path + QLatin1Char(':') + rest;
}

void KubeConfigView::sweep()
{
    for (const QString &folder : {runtimeFolder(), lastingFolder()}) {
        for (const QFileInfo &file : QDir(folder).entryInfoList({QStringLiteral("view-*")}, QDir::Files)) {
            if (!isFresh(file)) {
                removeUnused(file.filePath());
            }
        }
    }
}

} // namespace tidewright
