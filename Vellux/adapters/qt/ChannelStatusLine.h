// The line that says whether the presence is being followed.
#pragma once

#include "threads/CoalescedUpdate.h"
#include "adapters/qt/MainWindow.h"
#include "threads/Observers.h"

#include <QObject>

namespace Ui {
class MainWindow;
}

namespace vellux {

/// Compares what the Connect button says with the event channel: the server may have ended the following
/// while the button still offers to disconnect. Main thread; destroyed like LightHeader.
class ChannelStatusLine {
public:
    /// `lost` is called once per loss, after the line says so.
    ChannelStatusLine(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form,
                      std::function<void()> lost);
    ChannelStatusLine(const ChannelStatusLine&) = delete;
    ChannelStatusLine& operator=(const ChannelStatusLine&) = delete;

    /// Whether the line says that the presence is no longer followed.
    bool isLost() const { return m_bLost; }

private:
    void show();

    const MainWindow::Dependencies m_dependencies;
    Ui::MainWindow& m_form;
    const std::function<void()> m_lost;
    bool m_bLost = false;
    CoalescedUpdate m_update;
    QObject m_receiver;
    Observation m_observations[3];
};

} // namespace vellux
