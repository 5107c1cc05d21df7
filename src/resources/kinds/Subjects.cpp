// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/Subjects.h"

namespace tidewright {

QStringList bindingOutput()
{
    return {QStringLiteral("-ogo-template"),
        QStringLiteral("--template={{range.items}}{{.metadata.name}}\t{{.roleRef.kind}}/{{.roleRef.name}}\t"
                       "{{range .subjects}}{{.kind}} {{.namespace}} {{.name}},{{end}}\t"
                       "{{.metadata.creationTimestamp}}\n{{end}}")};
}

RoleGrant grantOf(QByteArrayView role, QByteArrayView subjects)
{
    QStringList users;
    QStringList groups;
    QStringList accounts;
    for (QString subject : textOf(subjects).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        subject.replace(missingValue, QLatin1String("-"));
        const QString kind = subject.section(QLatin1Char(' '), 0, 0);
        const QString nameSpace = subject.section(QLatin1Char(' '), 1, 1);
        const QString name = subject.section(QLatin1Char(' '), 2);
        if (kind == QLatin1String("ServiceAccount")) {
            accounts.append(nameSpace + QLatin1Char('/') + name);
        } else {
            (kind == QLatin1String("Group") ? groups : users).append(name);
        }
    }
    constexpr QLatin1String glue(", ");
    return {textOf(role), users.join(glue), groups.join(glue), accounts.join(glue)};
}

} // namespace tidewright
