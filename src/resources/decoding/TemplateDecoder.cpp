// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/decoding/TemplateDecoder.h"

#include "resources/kinds/FieldText.h"
#include "resources/printing/ListingTemplate.h"

namespace tidewright {

namespace {

constexpr char separator = '\x1f';

} // namespace

std::optional<QStringList> watchOutputArguments(const ResourceKind &kind)
{
    const auto listing = ListingTemplate::of(kind.outputArguments);
    if (!listing || listing->language != ListingTemplate::Language::GoTemplate) {
        return std::nullopt;
    }
    QByteArray item = listing->item;
    const QByteArray text = "--template={{.type}}\t{{with .object}}"
                            "{{if .metadata.namespace}}{{.metadata.namespace}}{{end}}\t{{.metadata.name}}\t"
                            "{{.metadata.uid}}\t"
        + item + "{{end}}\n";
    return QStringList{QStringLiteral("--watch"), QStringLiteral("--output-watch-events"),
        QStringLiteral("-ogo-template"),
        QString::fromUtf8(text).replace(QLatin1Char('\t'), QLatin1Char(separator))};
}

void TemplateDecoder::take(QByteArrayView bytes, std::vector<LiveChange> &changes)
{
    m_buffer.take(bytes, [this, &changes](QByteArrayView line) {
        enum { Type, Namespace, Name, Uid, Object, Parts };
        QByteArrayView parts[Parts];
        for (int i = 0; i < Object; ++i) {
            const qsizetype end = line.indexOf(separator);
            if (end < 0) {
                m_run.garbled = QStringLiteral("kubectl printed something that is no event of a watch.");
                return;
            }
            parts[i] = line.first(end);
            line = line.sliced(end + 1);
        }
        LiveChange change;
        change.key = parts[Namespace] + QByteArray("/") + parts[Name];
        change.uid = parts[Uid].toByteArray();
        if (parts[Type] == "DELETED") {
            change.kind = LiveChange::Kind::Remove;
        } else {
            change.line = line.toByteArray().replace(separator, '\t');
        }
        changes.push_back(std::move(change));
    });
}

} // namespace tidewright
