// The line that says whether the presence is being followed.
#pragma once

#include "adapters/qt/MainWindow.h"
#include "adapters/qt/Refresher.h"
#include "support/Observers.h"

#include <QObject>

namespace Ui {
class MainWindow;
}

namespace vellux {

/// Compares what the Connect button says with the event channel: the server may have ended the following while the
/// button still offers to disconnect. Main thread; ends like LightHead.
class FollowingLine {
public:
    /// `lost` is told once per loss, after the line says so.
    FollowingLine(const MainWindow::Surroundings& around, Ui::MainWindow& form, std::function<void()> lost);
    FollowingLine(const FollowingLine&) = delete;
    FollowingLine& operator=(const FollowingLine&) = delete;

    /// Whether the line says that the presence is no longer followed.
    bool isLost() const { return m_bLost; }

private:
    void show();

    const MainWindow::Surroundings m_around;
    Ui::MainWindow& m_form;
    const std::function<void()> m_lost;
    bool m_bLost = false;
    Refresher m_refresher;
    QObject m_receiver;
    Observation m_observations[3];
};

} // namespace vellux
