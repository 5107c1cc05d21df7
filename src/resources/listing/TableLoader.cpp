// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/TableLoader.h"

#include "platform/desktop/Diagnostics.h"
#include "resources/listing/LoadProblem.h"

namespace tidewright {

TableLoader::TableLoader(RowStore &store, WindowState &window, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_window(window)
    , m_pipeline(store)
{
    connect(&m_pipeline, &ListingPipeline::loadingChanged, this, &TableLoader::loadingChanged);
    connect(&m_pipeline, &ListingPipeline::rowsChanged, this, &TableLoader::rowsChanged);
    connect(&m_pipeline, &ListingPipeline::finished, this, &TableLoader::applyOutcome);
}

bool TableLoader::canLoad() const
{
    return !m_window.currentNamespace().isEmpty() && m_window.loadingHint().isEmpty();
}

void TableLoader::load(const LoadRequest &request)
{
    if (m_store.kind().listWord.isEmpty()) {
        writeDiagnostic(QStringLiteral("loadContent() requires override"));
        return;
    }
    if (!canLoad()) {
        return;
    }
    const std::shared_ptr<Shell> shell = m_window.kubeCtl().makeShell();
    shell->niceness = request.niceness;
    const bool everywhere = m_store.kind().namespaced && m_window.currentNamespace() == allNamespaces;
    m_pipeline.load(shell, listingArguments(), everywhere ? LineForm::WithNamespace : LineForm::Plain,
        request.logged, request.unattended);
}

QStringList TableLoader::listingArguments() const
{
    return QStringList{QStringLiteral("kubectl"), QStringLiteral("get"), m_store.kind().listWord,
        contextArgument(m_window.currentContext()), namespaceArgument(m_window.currentNamespace())};
}

void TableLoader::clear()
{
    m_rowsAsOf = QDateTime();
    m_problem.clear();
    m_failed = false;
    m_pipeline.clear();
    Q_EMIT rowsChanged();
}

void TableLoader::applyOutcome(const LoadOutcome &outcome)
{
    if (outcome.stopped) {
        m_problem = tr("Loading was stopped.");
        m_failed = false;
        if (!m_store.rows().empty()) {
            m_problem += QLatin1Char('\n') + tr("The rows are those of an earlier load.");
        }
    } else {
        m_rowsAsOf = outcome.startedAt;
        m_problem = loadProblem(outcome);
        m_failed = !m_problem.isEmpty() && m_store.rows().empty();
    }
    Q_EMIT finished();
}

} // namespace tidewright
