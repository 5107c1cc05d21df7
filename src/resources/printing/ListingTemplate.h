// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace tidewright {

/// The template in the output arguments of a listing, taken apart: what is printed of each item of the list.
struct ListingTemplate
{
    enum class Language { JsonPath, GoTemplate };

    /// Nothing when the arguments hold no template that is one range over the list's items.
    static std::optional<ListingTemplate> of(const QStringList &outputArguments);

    Language language = Language::JsonPath;
    QByteArray item; ///< the template of one item, without the line end behind it
};

} // namespace tidewright
