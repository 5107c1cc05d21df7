// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/forwards/PortForwards.h"

#include "core/kubeconfig/KubeConfigFiles.h"
#include "platform/text/DisplayText.h"
#include "resources/widgets/NamedImages.h"

#include <QApplication>
#include <QFont>
#include <QPalette>

#include <algorithm>

namespace tidewright {

namespace {

constexpr qsizetype longestNote = 200;

QString stateName(PortForward::State state)
{
    switch (state) {
    case PortForward::State::Starting:
        return PortForwards::tr("Starting");
    case PortForward::State::Forwarding:
        return PortForwards::tr("Forwarding");
    case PortForward::State::Reconnecting:
        return PortForwards::tr("Reconnecting");
    case PortForward::State::Failed:
        break;
    }
    return PortForwards::tr("Failed");
}

QString imageName(PortForward::State state)
{
    return state == PortForward::State::Forwarding ? QStringLiteral("NSStatusAvailable")
        : state == PortForward::State::Failed      ? QStringLiteral("NSStatusUnavailable")
                                                   : QStringLiteral("NSStatusPartiallyAvailable");
}

/// With the last line of what kubectl has said.
QString stateText(const PortForward &forward)
{
    const QString note = forward.said().trimmed().section(QLatin1Char('\n'), -1);
    const QString name = stateName(forward.state());
    return note.isEmpty() ? name
                          : QString(name + QLatin1String(": ") + display_text::shortened(note, longestNote));
}

QString text(const PortForward &forward, int column)
{
    const ForwardRequest &request = forward.request();
    switch (column) {
    case PortForwards::Object:
        return request.target;
    case PortForwards::Port:
        return QString::number(request.port);
    case PortForwards::Address:
        return forward.address().toString();
    case PortForwards::State:
        return stateText(forward);
    case PortForwards::Context:
        return request.context;
    case PortForwards::Namespace:
        return request.nameSpace;
    default:
        return forward.belongsTo();
    }
}

} // namespace

PortForwards &PortForwards::shared()
{
    static PortForwards forwards;
    return forwards;
}

void PortForwards::add(std::unique_ptr<PortForward> forward)
{
    const int row = rowCount();
    beginInsertRows({}, row, row);
    PortForward *added = m_forwards.emplace_back(std::move(forward)).get();
    endInsertRows();
    connect(added, &PortForward::changed, this, [this, added] { rowChanged(added); });
    added->start();
}

PortForward *PortForwards::at(int row) const
{
    return row >= 0 && row < rowCount() ? m_forwards[static_cast<std::size_t>(row)].get() : nullptr;
}

void PortForwards::stop(int row)
{
    if (!at(row)) {
        return;
    }
    beginRemoveRows({}, row, row);
    m_forwards.erase(m_forwards.begin() + row);
    endRemoveRows();
}

void PortForwards::stopAll()
{
    beginResetModel();
    m_forwards.clear();
    endResetModel();
}

void PortForwards::rowChanged(const PortForward *forward)
{
    const auto found = std::find_if(
        m_forwards.begin(), m_forwards.end(), [forward](const auto &each) { return each.get() == forward; });
    if (found != m_forwards.end()) {
        const int row = static_cast<int>(found - m_forwards.begin());
        Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
    }
}

int PortForwards::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_forwards.size());
}

int PortForwards::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PortForwards::data(const QModelIndex &index, int role) const
{
    const PortForward *forward = at(index.row());
    if (!forward) {
        return {};
    }
    const bool isLink = index.column() == Address && forward->state() == PortForward::State::Forwarding;
    switch (role) {
    case Qt::DisplayRole:
        return display_text::name(text(*forward, index.column()));
    case Qt::DecorationRole:
        return index.column() == State ? QVariant(namedImage(imageName(forward->state()))) : QVariant();
    case Qt::ForegroundRole:
        return isLink ? QVariant(QApplication::palette().link()) : QVariant();
    case Qt::FontRole:
        if (isLink) {
            QFont font;
            font.setUnderline(true);
            return font;
        }
        return {};
    default:
        return {};
    }
}

QString PortForwards::details(const QModelIndex &index) const
{
    const PortForward *forward = at(index.row());
    switch (forward ? index.column() : int(ColumnCount)) {
    case Address:
        return tr("Opens in the browser");
    case State:
        return forward->said().trimmed();
    case Context:
        return kubeConfigFiles(forward->request().kubeConfig);
    default:
        return index.data().toString();
    }
}

QVariant PortForwards::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const QStringList titles{tr("Object"), tr("Port"), tr("Local Address"), tr("State"), tr("Context"),
        tr("Namespace"), tr("Started From")};
    return orientation == Qt::Horizontal && role == Qt::DisplayRole ? QVariant(titles.value(section))
                                                                    : QVariant();
}

} // namespace tidewright
