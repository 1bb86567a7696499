// The lamp, drawn.
#pragma once

#include "model/ViewState.h"

#include <QWidget>

namespace vellux {

/// A picture of a lamp, a few lines of text high. It shows flashing by a mark and never moves. Main thread.
class LampView : public QWidget {
    Q_OBJECT
public:
    explicit LampView(QWidget* pParent = nullptr);

    /// What it shows, and its words for whoever can't see it; off at first.
    void setLamp(const LampState& lamp, const QString& strWords);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* pEvent) override;
    void changeEvent(QEvent* pEvent) override;

private:
    LampState m_lamp;
};

} // namespace vellux
