// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// What a word of a filter may become.
struct FilterOffer
{
    QString word; ///< ends with a colon when a text is to follow
    QString description; ///< may be empty
};

struct FilterOffers
{
    qsizetype begin = 0; ///< of the word that they would replace
    qsizetype end = 0; ///< behind it
    bool areValues = false; ///< texts of a column, whose name stands there already
    QList<FilterOffer> offers;
};

/// All words that the filter of a kind knows, with what they are for.
QList<FilterOffer> filterHelp(const ResourceKind &kind);

/// What may become of the word that ends at `cursor`: words that begin like it, or behind a colon, texts of
/// that column that stand in the rows (of very many, in some of them) and contain what stands there. "?"
/// stands for any word. Main thread.
FilterOffers filterOffers(const QString &text, qsizetype cursor, const ResourceKind &kind, const Rows &rows);

} // namespace tidewright
