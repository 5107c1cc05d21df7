// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/live/KubectlComplaint.h"

#include <algorithm>

namespace tidewright {

namespace {

bool saysAny(const QString &text, std::initializer_list<const char *> words)
{
    return std::any_of(
        words.begin(), words.end(), [&](const char *word) { return text.contains(QLatin1String(word)); });
}

} // namespace

bool KubectlComplaint::isExpired() const
{
    return saysAny(text, {"(Expired)", "(Gone)"});
}

bool KubectlComplaint::isUnknownPlace() const
{
    return saysAny(text, {"(NotFound)"});
}

bool KubectlComplaint::isFinal() const
{
    return isUnknownPlace()
        || saysAny(text,
            {"(Forbidden)", "(MethodNotAllowed)", "(NotAcceptable)", "(BadRequest)", "unknown flag",
                "unknown shorthand flag", "unknown command"});
}

} // namespace tidewright
