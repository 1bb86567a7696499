// The part of the main window in which a user signs in.
#pragma once

#include "adapters/qt/MainWindow.h"
#include "threads/CoalescedUpdate.h"
#include "threads/Observers.h"

#include <QObject>

namespace Ui {
class MainWindow;
}

class QLineEdit;

namespace vellux {

class Button;

/// Folds the sign-in fields into one line while there is a connection, unless the user unfolds them; passes a
/// press on Connect on once; knows where the focus belongs first. Main thread; destroyed like LightHeader.
class ConnectionPanel {
public:
    ConnectionPanel(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form);
    ConnectionPanel(const ConnectionPanel&) = delete;
    ConnectionPanel& operator=(const ConnectionPanel&) = delete;

    /// The user's press on Connect. What shows that it has begun comes from another thread, on a busy machine
    /// after the next press, which does not count.
    void press(Button& sender);
    /// On the first empty field, else on Connect while it connects, else on nothing that acts.
    void placeFocus();
    /// Makes the buttons wide enough for all of their titles, so that nothing moves when one changes.
    void reserveRoom();

private:
    class ClickFilter;

    void show();
    void fold(bool bFolded);
    QLineEdit* firstEmptyField() const;

    const MainWindow::Dependencies m_dependencies;
    Ui::MainWindow& m_form;
    bool m_bFolded = false;
    bool m_bUnfoldedByUser = false; // for as long as this connection lasts
    CoalescedUpdate m_update;
    QObject m_receiver;
    Observation m_observation;
};

} // namespace vellux
