// The virtual light as it would stand on the desk.
#pragma once

#include "light/ReportDecoder.h"

#include <QTimer>
#include <QWidget>

namespace vellux::simulator {

/// Draws what the light has decoded from its reports, with tables of its own. A light that flashes by itself
/// really flashes here. Main thread.
class LightPicture : public QWidget {
    Q_OBJECT
public:
    /// A dark light.
    explicit LightPicture(QWidget* parent = nullptr);

    /// Draws another state from now on.
    void setState(const LightState& state);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    LightState m_state;
    bool m_bDarkHalf = false;
    QTimer m_half; // runs while the light flashes by itself
};

} // namespace vellux::simulator
