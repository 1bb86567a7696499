// The light controller: owner of the main window's controls and of what the light shows.
//
// One class in eight rooms:
//   Controls.cpp         shared instance, controls, start-up, small window actions
//   Devices.cpp          device notices, the first light as a view shows it
//   Display.cpp          colour lists, displayVelluxColor, the lamp
//   Modes.cpp            manual and sync mode, the lists' and the flash-on-call box's actions
//   FlashWorkers.cpp     the two flashing workers and their stop protocol
//   PresencePolicy.cpp   from a presence token to a colour
//   Connection.cpp       Connect and Disconnect, the status monitor
//   Settings.cpp         the two files: uistate.txt and configv31.bin
//
// Operations run on the main thread unless their comment says otherwise. Above the driver its result codes
// are ignored. Fields that several threads touch are atomic or Shared; plain ones are guarded by the main
// thread's role.
#pragma once

#include "model/Colour.h"
#include "model/Controls.h"
#include "model/ViewState.h"
#include "ports/Desktop.h"
#include "ports/Listener.h"
#include "threads/MainThread.h"
#include "threads/Mutex.h"
#include "threads/Observable.h"
#include "threads/Shared.h"
#include "threads/SharedInstance.h"
#include "threads/WorkerThread.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class AboutDialog;

namespace vellux {
struct FlashSpeed;
}

class VelluxWindowUi : public vellux::Listener {
public:
    /// The one instance. Any thread. Its fourteen controls exist from the start, in their initial state.
    static VelluxWindowUi& sharedVelluxWindowUi();
    VelluxWindowUi(const VelluxWindowUi&) = delete;
    VelluxWindowUi& operator=(const VelluxWindowUi&) = delete;

    /// A file in which the controller keeps something.
    struct SettingsFile {
        std::string strPath;
        bool bCredentials = false;
    };
    /// The two files of a user whose application-support directory this is. Any thread.
    static std::array<SettingsFile, 2> settingsFiles(const std::string& strSupportDirectory);

    using Button = vellux::Button;
    using ComboBox = vellux::ComboBox;
    using TextField = vellux::TextField;
    template <typename T> using Ref = std::shared_ptr<T>;

    // ---- Controls.cpp ----
    // Getters on any thread. Setters are for whoever builds the window, before initConfig; never null. Our
    // windows don't use them. (kept-on-purpose:control-setters)

    Ref<Button> buttonSelectSyncMode() const { return controls.buttonSelectSyncMode; }
    Ref<TextField> textFieldLyncServerName() const { return controls.textFieldLyncServerName; }
    Ref<TextField> textFieldUsername() const { return controls.textFieldUsername; }
    Ref<TextField> textFieldPassword() const { return controls.textFieldPassword; }
    Ref<Button> buttonFlashOnCall() const { return controls.buttonFlashOnCall; }
    Ref<Button> buttonLightOffOnAway() const { return controls.buttonLightOffOnAway; }
    Ref<Button> buttonLightOffOnAvailable() const { return controls.buttonLightOffOnAvailable; }
    Ref<ComboBox> syncModeColorList() const { return controls.syncModeColorList; }
    Ref<ComboBox> syncModeFlashSpeedList() const { return controls.syncModeFlashSpeedList; }
    Ref<Button> buttonConnect() const { return controls.buttonConnect; }
    Ref<TextField> textFieldLyncStatus() const { return controls.textFieldLyncStatus; }
    Ref<Button> buttonSelectManualMode() const { return controls.buttonSelectManualMode; }
    Ref<ComboBox> manualModeColorList() const { return controls.manualModeColorList; }
    Ref<ComboBox> manualModeFlashSpeedList() const { return controls.manualModeFlashSpeedList; }

    void setButtonSelectSyncMode(Ref<Button> control) { controls.buttonSelectSyncMode = std::move(control); }
    void setTextFieldLyncServerName(Ref<TextField> control) {
        controls.textFieldLyncServerName = std::move(control);
    }
    void setTextFieldUsername(Ref<TextField> control) { controls.textFieldUsername = std::move(control); }
    void setTextFieldPassword(Ref<TextField> control) { controls.textFieldPassword = std::move(control); }
    void setButtonFlashOnCall(Ref<Button> control) { controls.buttonFlashOnCall = std::move(control); }
    void setButtonLightOffOnAway(Ref<Button> control) { controls.buttonLightOffOnAway = std::move(control); }
    void setButtonLightOffOnAvailable(Ref<Button> control) {
        controls.buttonLightOffOnAvailable = std::move(control);
    }
    void setSyncModeColorList(Ref<ComboBox> control) { controls.syncModeColorList = std::move(control); }
    void setSyncModeFlashSpeedList(Ref<ComboBox> control) {
        controls.syncModeFlashSpeedList = std::move(control);
    }
    void setButtonConnect(Ref<Button> control) { controls.buttonConnect = std::move(control); }
    void setTextFieldLyncStatus(Ref<TextField> control) { controls.textFieldLyncStatus = std::move(control); }
    void setButtonSelectManualMode(Ref<Button> control) {
        controls.buttonSelectManualMode = std::move(control);
    }
    void setManualModeColorList(Ref<ComboBox> control) { controls.manualModeColorList = std::move(control); }
    void setManualModeFlashSpeedList(Ref<ComboBox> control) {
        controls.manualModeFlashSpeedList = std::move(control);
    }

    // ---- Display.cpp, Devices.cpp, Connection.cpp: beside the controls, for the view to read ----
    // Any thread reads them; nothing here depends on them.

    /// What the light shows. Doesn't alternate while a light is being flashed.
    vellux::Observable<vellux::LampState>& lamp() { return m_lamp; }
    /// The first light as the last discovery found it. Written by main.
    vellux::Observable<vellux::LightState>& light() { return m_light; }
    /// The sign-in begun last; an earlier one that is still under way no longer counts, unless it succeeds
    /// when there is no later one. Its end is written when Connect has its final title.
    vellux::Observable<vellux::SignInStatus>& signIn() { return m_signIn; }

    // ---- Controls.cpp: start-up, window actions ----

    /// Start-up: fills the lists, sets defaults and placeholders, and reads both files; connects if they say
    /// so.
    void initConfig();

    /// Opens a new About window, above ordinary windows.
    void onAbout(const vellux::Control* sender);
    /// Opens the product's web site in the browser.
    void openLink(const vellux::Control* sender);
    /// Asks the application to end.
    void onExit(const vellux::Control* sender);
    /// Hides the window and answers false: it is never closed, and the light goes on following.
    bool windowShouldClose(vellux::Window& window);

    // ---- Devices.cpp ----

    /// A light arrived: lists the lights again, shows the colour asked for last, re-applies the mode and
    /// refills the colour lists. May wait for a flashing worker's cycle.
    void devicePlugged() override;
    /// A light left: lists the lights again and asks both flashing workers to stop; waits for nothing.
    void deviceUnplugged() override;

    // ---- Display.cpp ----

    /// Records a colour index (see model/Colour.h) and shows it on the first light. Returns the driver's
    /// result code; 0 when there is nothing to send. Any thread; takes the display lock. Blocks for its own
    /// reports and for another thread's: 10 to 40 ms each time, but seconds with a light that refuses or
    /// hangs (see VelluxControl.h).
    std::int32_t displayVelluxColor(std::int32_t nColor);
    /// Switches the light off; no colour is shown afterwards. Requests are still recorded.
    void switchOffForGood();

    // ---- Modes.cpp ----

    /// Enters manual mode: disconnects, remembering to reconnect later, waits for the sync worker and shows
    /// the manual colour.
    void setManualMode(Button& sender);
    /// Enters sync mode: waits for the manual worker, and reconnects if manual mode had disconnected. The
    /// light keeps its colour until the next presence.
    void setSyncMode(Button& sender);

    /// Shows the chosen colour, flashing as chosen; "None" ends the flashing. May wait for the manual worker.
    void onManualModeColorListSelection(ComboBox& sender);
    /// Flashes the manual colour at the chosen speed, or shows it steadily. May wait for the manual worker.
    void onManualModeFlashSpeedListSelection(ComboBox& sender);
    /// Stores the colour for calls and shows it while the user is on one.
    void onSyncModeColorListSelection(ComboBox& sender);
    /// Stores the chosen speed and, while the user is on a call and flash-on-call is checked, flashes at it.
    /// Main thread, and the status monitor's by way of the presence policy.
    void onSyncModeFlashSpeedListSelection(ComboBox& sender);
    /// Enables or disables the two sync lists and shows the presence again. May wait for the sync worker.
    void onFlashOnCallCheckedChanged(Button& sender);

    // Remembered positions of the four lists. Any thread.
    void setIndexOfManualModeColorList(std::int32_t nIndex) { indexOfManualModeColorList = nIndex; }
    void setIndexOfManualModeFlashSpeedList(std::int32_t nIndex) { indexOfManualModeFlashSpeedList = nIndex; }
    void setIndexOfSyncModeColorList(std::int32_t nIndex) { indexOfSyncModeColorList = nIndex; }
    void setIndexOfSyncModeFlashSpeedList(std::int32_t nIndex) { indexOfSyncModeFlashSpeedList = nIndex; }

    // ---- FlashWorkers.cpp ----
    // Lights of type 1 and 2 can't flash by themselves: a worker alternates off and the colour. At most one
    // manual and one sync worker run.

    /// Bodies of the workers; each ends with the colour shown, up to two half periods (1.5 s) after its stop
    /// request.
    void manualFlashingThreadMainMethod();
    void syncFlashingThreadMainMethod();
    /// Ask a worker, and a V30 light, to stop flashing; don't wait.
    void quitManualFlashingThread();
    void quitSyncFlashingThread();
    /// Wait until a running worker has ended; no time-out.
    void waitForManualFlashingThreadToExit();
    void waitForSyncFlashingThreadToExit();
    /// First step of shutdown: from now on no sync flashing worker is started, so that a status monitor still
    /// at work can't start one that nobody stops. Waits for the end of a worker being replaced.
    void beginShutdown();

    // ---- PresencePolicy.cpp ----
    // On the thread that brings the presence: main, or the status monitor's. May wait for the sync worker.

    /// In sync mode, shows what a presence token means, or flashes on a call, and puts the token, as the
    /// server spelled it, into the status line. An absent token means off and an empty line.
    void updateVelluxStatusWithPresence(const std::optional<std::string>& strToken) override;
    /// Shows the colour of a lower-case token; unknown, "" and absent mean off.
    void updateVelluxStatus(const std::optional<std::string>& strStatus);
    /// Actions of the two switch-off boxes, and last step for the tokens "away" and "online".
    void onlightOffOnAway(const Button* sender);
    void onlightOffOnAvailable(const Button* sender);

    // ---- Connection.cpp ----

    /// Connects or disconnects, by the button's title. Connecting saves the credentials first and uses them
    /// as they come back from the file.
    void onConnectButtonClicked(Button& sender);
    /// Disconnects, then connects: for a user whose presence is no longer followed.
    void reconnect();
    /// Closes the event channel and signs in again with the credentials in use, without an alert and without
    /// touching the light. Does nothing in manual mode or while Connect is disabled.
    void reconnectSilently();
    /// For a user who wants no colour that may be wrong: ends a call's flashing and switches the light off,
    /// until the next presence. Does nothing in manual mode. Blocks for up to one flash cycle (1.5 s).
    void switchOffUntilReached();
    /// Shows the presence that was read last again. Does nothing in manual mode.
    void showLastPresence();
    /// Whether sign-ins that no press on Connect begins (at the start, and back from manual mode) show no
    /// alert, since the program will try again by itself.
    void setSilentByItself(bool bSilent) VELLUX_REQUIRES(vellux::mainThreadRole) {
        m_bSilentByItself = bSilent;
    }
    /// Starts the status monitor and returns at once.
    void processLyncServerConnectionRequest();
    /// Body of the status monitor's thread: one pass through sign-in, registration, presence and the opening
    /// of the event channel. Blocks on requests, on alerts and on the main thread. `nSignIn` is the number
    /// that the sign-in has been given; absent, it is given one.
    void lyncStatusMonitorThreadMainMethod(std::optional<std::uint64_t> nSignIn = std::nullopt);
    /// Opens the event channel.
    void httpGetEventChannels();

    // ---- Settings.cpp ----

    /// Writes the window-state file; errors are ignored.
    void saveUiState();

private:
    VelluxWindowUi();
    ~VelluxWindowUi() override;

    // Devices.cpp
    void describeLight() VELLUX_REQUIRES(vellux::mainThreadRole);

    // Display.cpp
    void makeColorArrays() VELLUX_REQUIRES(vellux::mainThreadRole);
    void fillColorLists() VELLUX_REQUIRES(vellux::mainThreadRole);
    std::int32_t sendVelluxColor(std::int32_t nColor);
    void showOnLamp(std::int32_t nColor, std::int32_t nResult) VELLUX_REQUIRES(m_displayLock);

    // FlashWorkers.cpp
    // What can make the light flash: itself, or one of the workers.
    enum Flasher : unsigned { kLight = 1, kManualWorker = 2, kSyncWorker = 4 };
    void setFlashing(Flasher flasher, bool bFlashing);
    void flash(Flasher worker, const std::atomic<bool>& bQuit, const std::atomic<float>& flInterval,
               const std::atomic<std::int64_t>& nColor);
    void startHardwareFlash(const vellux::FlashSpeed* pSpeed);
    void stopHardwareFlash();
    void startManualFlashing() VELLUX_REQUIRES(vellux::mainThreadRole);
    void restartSyncFlashing();
    void stopSyncFlashing();

    // Connection.cpp
    void startMonitor(bool bSilent) VELLUX_REQUIRES(vellux::mainThreadRole);
    void signInByItself() VELLUX_REQUIRES(vellux::mainThreadRole);
    std::uint64_t noteSignIn(bool bAutomatic);
    void noteStep(std::uint64_t nSignIn, vellux::SignInStep step);
    void noteEnd(std::uint64_t nSignIn, vellux::SignInStatus::Result result);
    void forgetSignIn();

    // Modes.cpp
    void clampToItems(std::atomic<std::int64_t>& nIndex, const ComboBox& list) const;
    bool isToFlashOnCall() const;

    // PresencePolicy.cpp
    struct PresenceReading {
        std::optional<std::string> strStatus; // lower case
        bool bOnCall;
    };
    void showPresence(const PresenceReading& reading);
    void showUnlessSwitchedOff(const Button& box, std::int32_t nColor);

    // Settings.cpp
    void findOrCreateDirectory() VELLUX_REQUIRES(vellux::mainThreadRole);
    void restoreUiState() VELLUX_REQUIRES(vellux::mainThreadRole);
    void restoreSettings() VELLUX_REQUIRES(vellux::mainThreadRole);
    void writeSettings(const std::string& strServer, const std::string& strUser,
                       const std::string& strSecret) const VELLUX_REQUIRES(vellux::mainThreadRole);
    bool readSettings() VELLUX_REQUIRES(vellux::mainThreadRole);

    std::unique_ptr<AboutDialog> aboutDialog VELLUX_GUARDED_BY(vellux::mainThreadRole);
    std::atomic<std::int64_t> indexOfSyncModeColorList{0};
    std::atomic<std::int64_t> indexOfSyncModeFlashSpeedList{0};
    vellux::Shared<vellux::WorkerThreadRef> threadForSyncFlash;
    std::atomic<float> flSyncFlashTimeInterval{0}; // seconds
    std::atomic<bool> bQuitSyncFlashing{false};
    std::atomic<std::int64_t> indexOfManualModeColorList{0};
    std::atomic<std::int64_t> indexOfManualModeFlashSpeedList{0};
    vellux::WorkerThreadRef threadForManualFlash VELLUX_GUARDED_BY(vellux::mainThreadRole);
    std::atomic<float> flManualFlashTimeInterval{0}; // seconds
    std::atomic<bool> bQuitManualFlashing{false};
    // The one started last.
    vellux::WorkerThreadRef threadForLyncStatusMonitor VELLUX_GUARDED_BY(vellux::mainThreadRole);
    std::atomic<std::int32_t> nCurrentVelluxColor{vellux::kColourOff};
    std::string strVelluxDirectory VELLUX_GUARDED_BY(vellux::mainThreadRole);
    std::string strConfigFile VELLUX_GUARDED_BY(vellux::mainThreadRole);
    std::string strUiStateFile VELLUX_GUARDED_BY(vellux::mainThreadRole);
    vellux::Shared<std::string> strFQDN;
    vellux::Shared<std::string> strUserName;
    vellux::Shared<std::string> strPassword;
    vellux::Shared<std::optional<std::string>> lyncStatus; // last lower-case token
    // Manual mode was entered while connected.
    bool bToConnect VELLUX_GUARDED_BY(vellux::mainThreadRole) = false;
    // Nothing reads or writes it. (kept-on-purpose:unread-click)
    bool bConnectButtonClicked VELLUX_GUARDED_BY(vellux::mainThreadRole) = false;
    std::atomic<std::int32_t> nNumberOfVelluxDevices{0};
    std::string aesKey VELLUX_GUARDED_BY(vellux::mainThreadRole);
    // For lights of type 1 and 2: no orange.
    std::vector<std::string> colorArray1 VELLUX_GUARDED_BY(vellux::mainThreadRole);
    std::vector<std::string> colorArray2 VELLUX_GUARDED_BY(vellux::mainThreadRole);

    struct {
        Ref<Button> buttonSelectSyncMode;
        Ref<TextField> textFieldLyncServerName;
        Ref<TextField> textFieldUsername;
        Ref<TextField> textFieldPassword;
        Ref<Button> buttonFlashOnCall;
        Ref<Button> buttonLightOffOnAway;
        Ref<Button> buttonLightOffOnAvailable;
        Ref<ComboBox> syncModeColorList;
        Ref<ComboBox> syncModeFlashSpeedList;
        Ref<Button> buttonConnect;
        Ref<TextField> textFieldLyncStatus;
        Ref<Button> buttonSelectManualMode;
        Ref<ComboBox> manualModeColorList;
        Ref<ComboBox> manualModeFlashSpeedList;
    } controls;

    vellux::Observable<vellux::LampState> m_lamp;
    vellux::Observable<vellux::LightState> m_light;
    vellux::Observable<vellux::SignInStatus> m_signIn;
    std::atomic<std::uint64_t> m_nSignIns{0}; // begun, or forgotten
    bool m_bSilentByItself VELLUX_GUARDED_BY(vellux::mainThreadRole) = false;
    std::atomic<unsigned> m_nFlashers{0}; // set of Flasher

    // The display lock, first in the order of locks.
    vellux::RecursiveMutex m_displayLock;
    bool m_bDisplayClosed VELLUX_GUARDED_BY(m_displayLock) = false;
    // What the first light took last, also in the dark half of a worker's cycle.
    std::atomic<std::int32_t> m_nOnLight{vellux::kColourOff};

    // Makes each stop, wait, create, clear, start sequence of the sync worker atomic: main and the status
    // monitor both run it, and without the gate one could wait forever for a worker whose stop flag the other
    // has just cleared. Its holder waits only for the worker's end, and takes innermost locks only.
    vellux::Mutex m_syncFlashGate;
    bool m_bTerminating VELLUX_GUARDED_BY(m_syncFlashGate) = false;
};

/// Where the shared instance is kept.
extern vellux::SharedInstanceSlot<VelluxWindowUi> sharedVelluxWindowUiInstance;
