// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/kubeconfig/ContextPolicy.h"

#include <QWidget>

namespace tidewright {

/// The shade of a context's colour that stands out from the palette's windows, light or dark; invalid for
/// none.
QColor shadeOf(ContextColour colour);
/// For the user to choose by.
QString nameOf(ContextColour colour);
QString nameOf(ContextAccess access);

/// A narrow band in the colour of a context, along the upper edge of what belongs to it. Not there for one
/// without a colour.
class ContextBand : public QWidget
{
    Q_OBJECT
public:
    explicit ContextBand(QWidget *parent = nullptr);

    void setContext(const ContextKey &context);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void update();

    ContextKey m_context;
    ContextColour m_colour = ContextColour::None;
};

} // namespace tidewright
