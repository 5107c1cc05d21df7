// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/ApplicationRecord.h"

namespace tidewright {

namespace {

QString &packagedKubectl()
{
    static QString path;
    return path;
}

} // namespace

ApplicationRecord &applicationRecord()
{
    static ApplicationRecord record;
    return record;
}

QString kubectlPath()
{
    return packagedKubectl();
}

void setKubectlPath(const QString &path)
{
    packagedKubectl() = path;
}

} // namespace tidewright
