// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/story/ObjectStory.h"

#include <QTableWidget>

namespace tidewright {

/// The containers of a pod side by side: what each does, what became of it before, what it is made of. As
/// high as that needs, within limits; hidden without any. Main thread.
class ContainersTable : public QTableWidget
{
    Q_OBJECT
public:
    ContainersTable();

    void show(const std::vector<ContainerFacts> &containers);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void addContainer(int column, const ContainerFacts &facts);
    void layOut();
};

} // namespace tidewright
