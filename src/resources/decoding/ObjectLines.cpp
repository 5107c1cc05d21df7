// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/decoding/ObjectLines.h"

#include "resources/kinds/FreeText.h"

#include <simdjson.h>

#include <string_view>

namespace tidewright {

namespace {

QByteArrayView textAt(const simdjson::dom::element &object, std::string_view name)
{
    std::string_view text;
    return object.at_key(name).get(text) == simdjson::SUCCESS
        ? QByteArrayView(text.data(), static_cast<qsizetype>(text.size()))
        : QByteArrayView();
}

/// Times sort by their text. kubectl takes an object without one for the first of all, as it is done here
/// with the empty text.
QByteArray orderOf(const simdjson::dom::element &object, const QByteArray &pointer)
{
    std::string_view text;
    return !pointer.isEmpty() && object.at_pointer(pointer.constData()).get(text) == simdjson::SUCCESS
        ? QByteArray(text.data(), static_cast<qsizetype>(text.size()))
        : QByteArray();
}

} // namespace

QByteArray sortedBy(const ResourceKind &kind)
{
    const qsizetype option = kind.outputArguments.indexOf(QLatin1String("--sort-by"));
    return option < 0 ? QByteArray()
                      : kind.outputArguments.value(option + 1).toUtf8().replace('.', '/'); // ".a.b"
}

ObjectLines::ObjectLines(const ResourceKind &kind, QString &problem)
    : m_printer(ObjectPrinter::compile(kind.outputArguments, problem))
    , m_otherOutput(kind.otherOutput)
    , m_sortedBy(sortedBy(kind))
    , m_freeTextField(kind.freeTextField)
    , m_fieldCount(kind.fieldCount)
{
    if (m_printer && !kind.liveArguments.isEmpty()) {
        m_live = ObjectPrinter::compile(kind.liveArguments, problem);
    }
}

LiveChange ObjectLines::change(const simdjson::dom::element &object) const
{
    LiveChange change = removal(object);
    change.kind = LiveChange::Kind::Put;
    change.order = orderOf(object, m_sortedBy);
    QString problem = m_printer->print(object, change.line);
    const QStringList otherOutput
        = problem.isEmpty() || !m_otherOutput ? QStringList() : m_otherOutput(problem);
    if (!otherOutput.isEmpty()) {
        QString unknown;
        if (const auto other = ObjectPrinter::compile(otherOutput, unknown)) {
            change.line.clear();
            problem = other->print(object, change.line);
        }
    }
    if (m_freeTextField) {
        change.line = free_text::onOneLine(change.line, *m_freeTextField, m_fieldCount);
    }
    if (!problem.isEmpty()) {
        change.kind = LiveChange::Kind::Skip;
        change.line = change.key + ": " + problem.toUtf8();
    } else if (QByteArray live; m_live && m_live->print(object, live).isEmpty()) {
        change.line = lineOf(change.line, live);
    }
    return change;
}

LiveChange ObjectLines::removal(const simdjson::dom::element &object)
{
    LiveChange change{LiveChange::Kind::Remove};
    simdjson::dom::element metadata;
    if (object.at_key("metadata").get(metadata) == simdjson::SUCCESS) {
        change.key = textAt(metadata, "namespace") + QByteArray("/") + textAt(metadata, "name");
        change.uid = textAt(metadata, "uid").toByteArray();
    }
    return change;
}

} // namespace tidewright
