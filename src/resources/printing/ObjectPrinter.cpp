// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/printing/ObjectPrinter.h"

#include "resources/printing/GoTemplatePrinter.h"
#include "resources/printing/JsonPathPrinter.h"
#include "resources/printing/ListingTemplate.h"

namespace tidewright {

std::shared_ptr<const ObjectPrinter> ObjectPrinter::compile(
    const QStringList &outputArguments, QString &problem)
{
    const auto listing = ListingTemplate::of(outputArguments);
    if (!listing) {
        problem = QStringLiteral("The listing has no template that is printed for each item.");
        return nullptr;
    }
    return listing->language == ListingTemplate::Language::JsonPath
        ? JsonPathPrinter::compile(listing->item, problem)
        : GoTemplatePrinter::compile(listing->item, problem);
}

} // namespace tidewright
