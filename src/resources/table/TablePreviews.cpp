// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/TablePreviews.h"

#include "platform/text/Timestamp.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/ClusterChange.h"
#include "resources/story/YamlObject.h"
#include "resources/table/ResourceTableView.h"

namespace tidewright {

namespace {

constexpr qsizetype largestFace = 16 << 20; // bytes
constexpr qsizetype longestStory = 4 << 20; // bytes of YAML in which relations are looked for

} // namespace

TablePreviews::TablePreviews(ResourceTableView &view, WindowState &window, const ResourceKind &kind)
    : m_view(view)
    , m_window(window)
    , m_kind(kind)
{
}

TablePreviews::~TablePreviews()
{
    endLoading();
}

int TablePreviews::numberOfPreviewItems() const
{
    return m_view.selectedRowCount();
}

/// Without a name when there is none.
ObjectName TablePreviews::objectAt(int index) const
{
    const std::vector<int> rows = m_view.selectedRowsInOrder();
    return index < std::ssize(rows)
        ? m_view.objectAt(rows[static_cast<std::size_t>(index)], m_window.currentNamespace())
        : ObjectName();
}

QString TablePreviews::previewItemTitle(int index) const
{
    return objectAt(index).name;
}

void TablePreviews::loadPreviewItem(int index, PreviewReady ready)
{
    endLoading(); // nobody waits for an earlier one any more
    m_item = {m_window.currentContext(), m_window.currentNamespace(), objectAt(index)};
    const auto &[nameSpace, name] = m_item.object;
    if (const auto recent = m_files.recent(m_item.context, PreviewFiles::pathFor(nameSpace, name))) {
        ready(recent, QString());
        return;
    }
    if (const QString reason = obstacle(); !reason.isEmpty()) {
        ready(std::nullopt, reason);
        return;
    }
    fetch(ready);
}

bool TablePreviews::isStillShown(const Request &request) const
{
    return request.context == m_window.currentContext() && request.shown == m_window.currentNamespace();
}

/// Why kubectl cannot be asked about the item: a sentence; empty when it can.
QString TablePreviews::obstacle() const
{
    const QString reason = whyNotByName(m_kind, {m_item.object});
    return reason.isEmpty() ? QString() : QLatin1String("Nothing was previewed: ") + reason;
}

void TablePreviews::fetch(const PreviewReady &ready)
{
    const auto &[nameSpace, name] = m_item.object;
    const QStringList arguments = QStringList{QStringLiteral("kubectl"), QStringLiteral("get")}
        + separateNamespaceArguments(nameSpace)
        + QStringList{m_kind.resourceName, name, QStringLiteral("-o"), QStringLiteral("yaml")};
    const QString path = PreviewFiles::pathFor(nameSpace, name);
    const std::shared_ptr<Shell> shell = m_window.kubeCtl().makeShell();
    m_shells[static_cast<std::size_t>(PreviewFace::Yaml)] = shell;
    shell->runAsync(arguments, false, nullptr,
        [self = QPointer(this), request = m_item, path, ready](const ShellResult &result) {
            // Beside a warning of the server there is the object all the same.
            const bool isThere = result.exitStatus == 0 && !result.output.isEmpty();
            const QString reason = isThere ? QString()
                : result.exitStatus == 0   ? QObject::tr("kubectl printed nothing that can be read.")
                                           : result.failure();
            const QString failure = isThere ? PreviewFiles::write(path, result.output) : QString();
            const QString shown
                = PreviewFiles::shownText(result.output, failure.isEmpty() ? path : QString());
            const auto object = isThere && result.output.size() <= longestStory ? objectOfYaml(result.output)
                                                                                : std::nullopt;
            const ObjectStory story = storyOf(object.value_or(QJsonObject()), currentTime());
            postToMain(self,
                [request, path, ready, isThere, reason, shown, failure, story](TablePreviews &previews) {
                    if (!isThere || !previews.isStillShown(request)) {
                        ready(std::nullopt, reason);
                        return;
                    }
                    PreviewItem item{request.object.name, shown, path, story};
                    previews.addPods(item.story);
                    previews.m_files.store(request.context, item, failure);
                    ready(item, QString());
                });
        });
}

void TablePreviews::addPods(ObjectStory &story) const
{
    const bool has = m_kind.pods == ResourceKind::Pods::OnNode
        || (m_kind.pods == ResourceKind::Pods::BySelector && story.hasSelector);
    if (has) {
        story.relations.insert(story.relations.begin(), {tr("Pods"), QStringLiteral("pod"), {}});
    }
}

void TablePreviews::loadDescription(DescriptionReady ready)
{
    QStringList arguments{
        QStringLiteral("kubectl"), QStringLiteral("describe"), contextArgument(m_item.context)};
    if (m_kind.namespaced) {
        arguments += namespaceArgument(m_item.object.nameSpace);
    }
    // As one word: kubectl takes a name that stands for itself, when there is no such object, for the
    // beginning of other ones' names, and describes those.
    arguments += m_kind.resourceName + QLatin1Char('/') + m_item.object.name;
    ask<QString>(
        PreviewFace::Describe, arguments,
        [](const QByteArray &printed) { return PreviewFiles::shownText(printed, {}); }, std::move(ready));
}

void TablePreviews::loadEvents(const ObjectStory &story, EventsReady ready)
{
    if (story.kind.isEmpty()) {
        ready(
            std::nullopt, tr("The object does not say of which kind it is, by which its events are known."));
        return;
    }
    // Those of an object that the whole cluster shares lie in one namespace or another.
    const QString place = m_kind.namespaced ? m_item.object.nameSpace : QString(allNamespaces);
    const QStringList arguments
        = QStringList{QStringLiteral("kubectl"), QStringLiteral("get"), QStringLiteral("events"),
              contextArgument(m_item.context), namespaceArgument(place)}
        + eventArguments(story, m_item.object.name);
    ask<std::vector<ObjectEvent>>(PreviewFace::Events, arguments, parseEvents, std::move(ready));
}

/// `read` is called on the thread that ran kubectl.
template <typename Content>
void TablePreviews::ask(PreviewFace face, const QStringList &arguments,
    const std::function<Content(const QByteArray &)> &read,
    const std::function<void(const std::optional<Content> &, const QString &)> &done)
{
    if (const QString reason = obstacle(); !reason.isEmpty()) {
        done(std::nullopt, reason);
        return;
    }
    if (!isStillShown(m_item)) {
        done(std::nullopt, tr("The window shows another place by now."));
        return;
    }
    const std::shared_ptr<Shell> shell = m_window.kubeCtl().makeShell();
    shell->outputLimit = largestFace;
    m_shells[static_cast<std::size_t>(face)] = shell;
    shell->runAsync(arguments, true, m_window.console(),
        [self = QPointer(this), request = m_item, read, done](const ShellResult &result) {
            // A server's warning is no failure.
            const auto content = result.exitStatus == 0 ? std::optional(read(result.output)) : std::nullopt;
            postToMain(
                self, [request, done, content, reason = result.failure()](const TablePreviews &previews) {
                    done(previews.isStillShown(request) ? content : std::nullopt, reason);
                });
        });
}

void TablePreviews::endLoading()
{
    for (std::shared_ptr<Shell> &shell : m_shells) {
        if (shell) {
            shell->cancel();
            shell.reset();
        }
    }
}

bool TablePreviews::canFollow(const Relation &relation) const
{
    const QString shown = m_window.currentNamespace();
    return relation.object.nameSpace.isEmpty() || shown == allNamespaces
        || relation.object.nameSpace == shown;
}

void TablePreviews::follow(const Relation &relation)
{
    if (isStillShown(m_item)) {
        Q_EMIT followed(m_item.object, relation);
    }
}

void TablePreviews::forget()
{
    endLoading();
    m_files = {};
}

void TablePreviews::movePreviewSelection(int rows)
{
    const std::vector<int> selected = m_view.selectedRowsInOrder();
    const int target = selected.empty() ? 0 : selected.front() + rows;
    if (target >= 0 && target < m_view.arrangedObjects().rowCount()) {
        m_view.selectRow(target);
    }
}

} // namespace tidewright
