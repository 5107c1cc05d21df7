// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/story/ObjectStory.h"

#include <QLabel>

namespace tidewright {

/// The objects that one has to do with, as links with their names. Main thread.
class RelationsLine : public QLabel
{
    Q_OBJECT
public:
    RelationsLine();

    /// Of a relation for which `canFollow` is false only the name is shown.
    void show(const std::vector<Relation> &relations,
        const std::function<bool(const Relation &relation)> &canFollow);
    void clearRelations();

Q_SIGNALS:
    void followed(const tidewright::Relation &relation);

private:
    QString linkText(std::size_t index, bool isLink) const;

    std::vector<Relation> m_relations;
};

} // namespace tidewright
