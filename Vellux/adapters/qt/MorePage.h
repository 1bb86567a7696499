// The page of what the user may choose beyond the main window.
#pragma once

#include "adapters/qt/ChoicesFile.h"
#include "threads/CoalescedUpdate.h"
#include "threads/MainThread.h"

#include <QDialog>

#include <functional>
#include <optional>
#include <string>

class QCheckBox;
class QLabel;

namespace vellux {

/// Shows the choices and makes them, and says so when one could not be kept. Modeless. Main thread.
class MorePage : public QDialog {
    Q_OBJECT
public:
    /// Whether the session starts the program. The file is the truth; the page keeps nothing.
    struct Autostart {
        std::function<bool()> isOn;
        /// Absent when it is done, else what was in the way, in the system's words.
        std::function<std::optional<std::string>(bool bOn)> setOn;
        std::string strPath; ///< of the file
    };
    struct Dependencies {
        MainThread& mainThread; ///< outlives the page, as the file does
        ChoicesFile& choicesFile;
        Autostart autostart;
    };

    /// Hidden at first. It belongs to the window, which outlives it.
    MorePage(QWidget& window, Dependencies dependencies);

    /// Shows it as the files are now, in front.
    void present();

private:
    /// A choice in the file.
    void addChoice(bool Choices::*choice, QCheckBox* pBox);
    void setAutostart(bool bOn);
    void showChoices();

    const Dependencies m_dependencies;
    QCheckBox* m_pReconnect = nullptr; // these are the dialog's
    QCheckBox* m_pLightOff = nullptr;
    QLabel* m_pChoicesTrouble = nullptr;
    QCheckBox* m_pAutostart = nullptr;
    QLabel* m_pAutostartTrouble = nullptr;
    CoalescedUpdate m_update;
    Observation m_observation;
};

} // namespace vellux
