// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/WindowState.h"

namespace tidewright {

namespace {

QString &cacheFolder()
{
    static QString path;
    return path;
}

} // namespace

QString cacheDirectory()
{
    return cacheFolder();
}

void setCacheDirectory(const QString &path)
{
    cacheFolder() = path;
}

} // namespace tidewright
