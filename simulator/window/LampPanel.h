// The simulator's own window: the virtual light, and what other clients of the user and the world do.
#pragma once

#include "light/VirtualLights.h"
#include "platform/Changes.h"
#include "server/PresenceServer.h"
#include "threads/MainThread.h"

#include <QCloseEvent>
#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include <functional>

namespace vellux::simulator {

class LightPicture;

/// Main thread. Outlives all threads that change the light. Closing it ends the simulation.
class LampPanel : public QWidget {
    Q_OBJECT
public:
    /// All of these outlive the panel.
    struct Dependencies {
        MainThread& mainThread;
        Changes& changes;
        VirtualLights& lights;
        VirtualLightRef light;
        PresenceServer& server;
        /// Brings the program's window back when it was hidden, as starting the program again would.
        std::function<void()> reopen;
        /// Ends the simulation.
        std::function<void()> end;
    };

    /// Shows nothing yet.
    explicit LampPanel(Dependencies dependencies);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void refresh();
    QWidget* lightBox();
    QWidget* presenceBox();
    QWidget* worldBox();

    const Dependencies m_dependencies;
    LightPicture* m_picture = nullptr; // owned by Qt's tree, as the others
    QLabel* m_text = nullptr;
    QLabel* m_channel = nullptr;
    QPushButton* m_plug = nullptr;
    Observation m_observation;
};

} // namespace vellux::simulator
