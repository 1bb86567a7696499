// The head of the main window: the lamp and the light.
#pragma once

#include "adapters/qt/MainWindow.h"
#include "model/ViewState.h"
#include "threads/CoalescedUpdate.h"
#include "threads/Observers.h"

#include <QObject>

namespace Ui {
class MainWindow;
}

namespace vellux {

/// Shows the lamp as a picture and in words, the light in a line, and a command to copy for a user who may
/// not open it. Without a light the lamp is hollow, and the line says what one would show. Main thread;
/// destroyed after the last thread that writes what it shows has ended, and before the form's widgets.
class LightHeader {
public:
    LightHeader(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form);
    LightHeader(const LightHeader&) = delete;
    LightHeader& operator=(const LightHeader&) = delete;

    /// Reserves room for the longest line, so that the window keeps its width. To be called when the font has
    /// changed.
    void reserveRoom();

private:
    void show();
    void showRemedy(const LightState& light);

    const MainWindow::Dependencies m_dependencies;
    Ui::MainWindow& m_form;
    CoalescedUpdate m_update;
    QObject m_receiver;
    Observation m_observations[2];
};

} // namespace vellux
