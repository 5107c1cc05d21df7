// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/ActionFolders.h"

#include "actions/ActionQueue.h"
#include "platform/desktop/Bundle.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/threads/MainQueue.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImageReader>
#include <QPointer>
#include <QtMath>

#include <algorithm>
#include <filesystem>
#include <mutex>

namespace tidewright {

namespace {

// Below one folder of the top level. Far more than anybody has, and little enough when a link leads to a
// whole disk.
constexpr int mostFolders = 2000;
constexpr int deepestFolder = 32;

constexpr qint64 largestImageFile = 4 << 20;
constexpr int largestImageSide = 1024;

/// In the size in which it is shown, at most or (stretched) exactly. Null when the file is no readable PNG of
/// a sensible size; the standard image is shown then.
QImage readImage(const QString &path, int pixelsPerPoint, Qt::AspectRatioMode mode)
{
    const QFileInfo file(path);
    if (path.isEmpty() || !file.isFile() || file.size() > largestImageFile) {
        return {};
    }
    // One decoder, however many others Qt's plug-ins on this machine bring along.
    QImageReader reader(path, QByteArrayLiteral("png"));
    reader.setAutoDetectImageFormat(false);
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > largestImageSide || size.height() > largestImageSide) {
        return {};
    }
    const int side = CustomActionItem::iconPoints * pixelsPerPoint;
    const bool isStretched = mode == Qt::IgnoreAspectRatio;
    if (isStretched || size.width() > side || size.height() > side) {
        reader.setScaledSize(size.scaled(side, side, mode).expandedTo(QSize(1, 1)));
    }
    QImage image = reader.read();
    image.setDevicePixelRatio(pixelsPerPoint);
    return image;
}

/// What editors leave beside a file that they write.
bool isBackup(const QString &name)
{
    static const QStringList endings{QStringLiteral("~"), QStringLiteral(".bak"), QStringLiteral(".backup"),
        QStringLiteral(".old"), QStringLiteral(".orig"), QStringLiteral(".rej"), QStringLiteral(".save"),
        QStringLiteral(".swp"), QStringLiteral(".swo"), QStringLiteral(".tmp")};
    return std::any_of(
        endings.begin(), endings.end(), [&name](const QString &ending) { return name.endsWith(ending); });
}

bool isScript(const QString &name)
{
    return name.startsWith(QLatin1String("main.")) && !isBackup(name);
}

/// One walk through the folders, on one thread.
class FolderWalk
{
public:
    explicit FolderWalk(const QString &root)
        : m_ancestors{FileIdentity::at(QFile::encodeName(root))}
    {
    }

    std::vector<ActionFolder> find(QStringList folders)
    {
        std::vector<ActionFolder> found;
        const auto name = [](const QString &path) { return QFileInfo(path).fileName(); };
        std::sort(folders.begin(), folders.end(),
            [&name](const QString &a, const QString &b) { return name(a) < name(b); });
        for (const QString &folder : std::as_const(folders)) {
            const FileIdentity identity = FileIdentity::at(QFile::encodeName(folder));
            if (isAncestor(identity)) {
                continue;
            }
            m_ancestors.push_back(identity);
            findIn(folder, found);
            m_ancestors.pop_back();
        }
        return found;
    }

    QStringList takeProblems() { return std::move(m_problems); }

private:
    void findIn(const QString &folder, std::vector<ActionFolder> &found)
    {
        if (m_ancestors.size() == topLevel) {
            m_folders = 0;
            m_saidTooMany = false;
        }
        if (m_ancestors.size() > deepestFolder || ++m_folders > mostFolders) {
            if (!m_saidTooMany) {
                m_problems.append(QStringLiteral("There are too many action folders, or they are nested too "
                                                 "deeply; %1 and others were left out.")
                                      .arg(folder));
            }
            m_saidTooMany = true;
            return;
        }
        const QStringList entries = directoryContents(folder);
        const QStringList subfolders = keptSubfolders(entries);
        const QString title = QFileInfo(folder).fileName();
        if (!subfolders.isEmpty()) {
            found.push_back({title, {}, {}, {}, {}, find(subfolders)});
            return;
        }
        const auto first = [&entries](const auto &wanted) {
            const auto entry = std::find_if(entries.begin(), entries.end(),
                [&wanted](const QString &path) { return wanted(QFileInfo(path).fileName()); });
            return entry == entries.end()
                ? ActionFolder::File()
                : ActionFolder::File{*entry, FileIdentity::at(QFile::encodeName(*entry))};
        };
        const auto named = [&first](const char *name) {
            return first([name](const QString &entry) { return entry == QLatin1String(name); });
        };
        const auto script = first(isScript);
        const auto scripts = std::count_if(entries.begin(), entries.end(),
            [](const QString &entry) { return isScript(QFileInfo(entry).fileName()); });
        if (scripts > 1) {
            m_problems.append(QStringLiteral("The action in %1 has several scripts; %2 is the one that runs.")
                                  .arg(folder, QFileInfo(script.path).fileName()));
        }
        if (!script.path.isEmpty()) {
            found.push_back({title, script, named("icon.png"), named("menu.png"), named("config.json"), {}});
        }
    }

    QStringList keptSubfolders(const QStringList &entries) const
    {
        QStringList kept;
        for (const QString &entry : entries) {
            const QFileInfo info(entry);
            // ".git" and the like are nobody's actions.
            if (info.isDir() && !info.isHidden() && !info.fileName().startsWith(QLatin1String("__"))
                && !isAncestor(FileIdentity::at(QFile::encodeName(entry)))) {
                kept.append(entry);
            }
        }
        return kept;
    }

    /// A link that leads to a folder around it would be followed for ever.
    bool isAncestor(const FileIdentity &identity) const
    {
        return std::any_of(m_ancestors.begin(), m_ancestors.end(), [&identity](const FileIdentity &ancestor) {
            return ancestor.device == identity.device && ancestor.inode == identity.inode;
        });
    }

    static constexpr std::size_t topLevel = 2; // the root and the folder itself
    std::vector<FileIdentity> m_ancestors;
    int m_folders = 0;
    bool m_saidTooMany = false;
    QStringList m_problems;
};

FoundActions findActions(QStringList folders, int pixelsPerPoint)
{
    for (QString &folder : folders) {
        folder = QDir::cleanPath(folder);
    }
    FolderWalk walk(folders.isEmpty() ? QString() : QFileInfo(folders.first()).path());
    FoundActions found;
    found.pixelsPerPoint = pixelsPerPoint;
    found.folders = walk.find(std::move(folders));
    found.problems = walk.takeProblems();
    return found;
}

std::vector<ActionNode> makeNodes(
    const std::vector<ActionFolder> &folders, int pixelsPerPoint, QStringList &problems)
{
    std::vector<ActionNode> nodes;
    for (const ActionFolder &folder : folders) {
        if (folder.script.path.isEmpty()) {
            nodes.push_back({folder.title, nullptr, makeNodes(folder.children, pixelsPerPoint, problems)});
            continue;
        }
        auto item = CustomActionItem::create(folder.title,
            readImage(folder.icon.path, pixelsPerPoint, Qt::KeepAspectRatio),
            readImage(folder.menuIcon.path, pixelsPerPoint, Qt::IgnoreAspectRatio), folder.script.path,
            folder.config.path.isEmpty() ? std::nullopt : std::optional(folder.config.path));
        if (!item->configProblem().isEmpty()) {
            problems.append(item->configProblem());
        }
        nodes.push_back({folder.title, std::move(item), {}});
    }
    return nodes;
}

ActionTree makeTree(FoundActions found)
{
    ActionTree tree;
    tree.nodes = makeNodes(found.folders, found.pixelsPerPoint, tree.problems);
    tree.problems += found.problems;
    tree.found = std::move(found);
    return tree;
}

SharedActionTree loadActions(const SharedActionTree &known, int pixelsPerPoint)
{
    const auto folder = actionsFolderURL(installStarterKit);
    if (!folder) {
        return nullptr;
    }
    QStringList folders;
    for (const QString &entry : directoryContents(*folder)) {
        if (const QFileInfo info(entry); info.isDir() && !info.isHidden()) {
            folders.append(entry);
        }
    }
    FoundActions found = findActions(std::move(folders), pixelsPerPoint);
    return known && known->found == found ? known
                                          : std::make_shared<const ActionTree>(makeTree(std::move(found)));
}

} // namespace

std::optional<QString> actionsFolderURL(const std::function<void(const QString &folder)> &onCreate)
{
    static std::mutex mutex; // two windows may look for it at once, and one of them makes it
    const std::lock_guard lock(mutex);
    const QString support = bundle::applicationSupportFolder();
    if (support.isEmpty()) {
        return std::nullopt;
    }
    const QString folder = support + QLatin1String("/Tidewright/Actions");
    if (QFileInfo(folder).isDir()) {
        return folder;
    }
    const auto userOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    const bool isMade
        = QDir().mkpath(support + QLatin1String("/Tidewright")) && QDir().mkdir(folder, userOnly);
    if (!isMade) {
        return std::nullopt;
    }
    if (onCreate) {
        onCreate(folder);
    }
    return folder;
}

void installStarterKit(const QString &actionsFolder)
{
    namespace fs = std::filesystem;
    const QString name = QStringLiteral("Starter Kit");
    const QString source = bundle::resource(name);
    if (source.isEmpty()) {
        writeDiagnostic(QStringLiteral("Error creating starter kit: it is not in the package"));
        return;
    }
    try {
        const fs::path target(QFile::encodeName(actionsFolder + QLatin1Char('/') + name).toStdString());
        fs::copy(QFile::encodeName(source).toStdString(), target, fs::copy_options::recursive);
        // The package may be read-only; what belongs to the user is not.
        fs::permissions(target, fs::perms::owner_all, fs::perm_options::add);
        for (const auto &entry : fs::recursive_directory_iterator(target)) {
            fs::permissions(entry.path(), fs::perms::owner_write, fs::perm_options::add);
        }
    } catch (const fs::filesystem_error &error) {
        writeDiagnostic(QLatin1String("Error creating starter kit: ") + QString::fromLocal8Bit(error.what()));
    }
}

QStringList directoryContents(const QString &folder)
{
    QStringList entries;
    QDirIterator iterator(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (iterator.hasNext()) {
        entries.append(iterator.next());
    }
    return entries;
}

ActionTree loadActionFolders(QStringList folders, int pixelsPerPoint)
{
    return makeTree(findActions(std::move(folders), pixelsPerPoint));
}

void loadActionsInBackground(
    QObject *receiver, std::function<void(const SharedActionTree &tree)> loaded, SharedActionTree known)
{
    // Of the densest screen; no less than 2, for those that are connected later.
    const int pixelsPerPoint = std::max(2, qCeil(qGuiApp->devicePixelRatio()));
    customActionQueue().post([receiver = QPointer(receiver), loaded = std::move(loaded),
                                 known = std::move(known), pixelsPerPoint] {
        postToMain(
            receiver, [tree = loadActions(known, pixelsPerPoint), loaded](const QObject &) { loaded(tree); });
    });
}

} // namespace tidewright
