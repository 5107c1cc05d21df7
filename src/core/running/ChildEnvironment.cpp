// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/ChildEnvironment.h"

#include "core/running/ProgramFolders.h"

#include <QFile>

namespace tidewright::child_environment {

namespace {

const auto pathName = QByteArrayLiteral("PATH");
const auto kubeConfigName = QByteArrayLiteral("KUBECONFIG");
const auto kubeRcName = QByteArrayLiteral("KUBERC");

void appendAddedFolders(Environment &environment)
{
    for (const QString &folder : program_folders::added()) {
        if (const QString path = program_folders::inPath(folder); !path.isEmpty()) {
            QByteArray &list = environment[pathName];
            list += (list.isEmpty() ? QByteArray() : QByteArrayLiteral(":")) + QFile::encodeName(path);
        }
    }
}

} // namespace

Environment withFixedPath()
{
    Environment environment = currentEnvironment();
    environment.insert(pathName, QByteArrayLiteral("/bin:/usr/bin/:/usr/local/bin"));
    appendAddedFolders(environment);
    return environment;
}

Environment withOwnPath()
{
    Environment environment = currentEnvironment();
    appendAddedFolders(environment);
    return environment;
}

void setKubeConfig(Environment &environment, const QString &files)
{
    if (!files.isEmpty()) {
        environment.insert(kubeConfigName, QFile::encodeName(files));
    }
}

void ignoreKubeRc(Environment &environment)
{
    environment.insert(kubeRcName, QByteArrayLiteral("off"));
}

void restoreKubeRc(Environment &environment)
{
    if (qEnvironmentVariableIsSet(kubeRcName.constData())) {
        environment.insert(kubeRcName, qgetenv(kubeRcName.constData()));
    } else {
        environment.remove(kubeRcName);
    }
}

QString kubeConfig(const Environment &environment)
{
    return QFile::decodeName(environment.value(kubeConfigName));
}

} // namespace tidewright::child_environment
