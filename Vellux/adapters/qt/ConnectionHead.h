// The head of the main window: whether the presence is followed, why not, and what helps.
#pragma once

#include "adapters/qt/MainWindow.h"
#include "ports/Timers.h"
#include "threads/CoalescedUpdate.h"
#include "threads/Observers.h"

#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include <chrono>

namespace Ui {
class MainWindow;
}

namespace vellux {

/// Says the state in words, with an icon and in bold once the following is lost, below that why it does not
/// connect, and offers to reconnect when the following has ended. Main thread; destroyed like LightHeader. It
/// belongs to the form's window as a widget.
class ConnectionHead {
public:
    /// A sign-in that lasts so long says since when.
    static constexpr std::chrono::seconds kSayingSince{3};

    /// Takes the place of the form's labelFollowing, and takes that and buttonReconnect into itself.
    ConnectionHead(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form);
    ConnectionHead(const ConnectionHead&) = delete;
    ConnectionHead& operator=(const ConnectionHead&) = delete;

private:
    class Panel;
    void show();
    void watchSignIn() VELLUX_REQUIRES(mainThreadRole);

    const MainWindow::Dependencies m_dependencies;
    Panel& m_panel; // the window's
    std::chrono::system_clock::time_point m_signInBegan{};
    TimerRef m_sayingSinceDue;
    bool m_bSayingSince = false;
    CoalescedUpdate m_update;
    QObject m_receiver;
    Observation m_observations[3];
};

} // namespace vellux
