// What the modules ask of the desktop: windows, alerts, the browser, directories.
#pragma once

#include "threads/MainThread.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellux {

/// An informational modal message box.
struct Alert {
    std::vector<std::string> buttons;
    std::string strMessageText;
    std::string strInformativeText;
};

/// Response code of an alert's first button.
constexpr std::int32_t kAlertFirstButtonReturn = 1000;

enum class WindowLevel { Normal, ModalPanel };

/// A top-level window. Main thread only.
class Window {
public:
    Window() = default;
    virtual ~Window() = default;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    virtual void makeKeyAndOrderFront() VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Hides the window without closing it.
    virtual void orderOut() VELLUX_REQUIRES(mainThreadRole) = 0;
    /// ModalPanel floats above ordinary windows.
    virtual void setLevel(WindowLevel level) VELLUX_REQUIRES(mainThreadRole) = 0;
};

/// Callbacks of a window loaded by its description's name. Main thread only.
class WindowController {
public:
    virtual ~WindowController() = default;

    /// The window's contents have been loaded.
    virtual void windowDidLoad() = 0;
    /// The user wants to close it; returns whether it may close.
    virtual bool windowShouldClose(const void* sender) = 0;
};

/// Keeps the system from suspending the program for as long as a reference exists.
using ProcessActivity = std::shared_ptr<void>;

/// Main thread only, unless said otherwise.
class Desktop {
public:
    virtual ~Desktop() = default;

    /// Runs an application-modal alert and returns the response code when it has been dismissed.
    virtual std::int32_t runModal(const Alert& alert) VELLUX_REQUIRES(mainThreadRole) = 0;
    /// The application's main window; null while there is none.
    virtual Window* mainWindow() VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Loads the window with the given description name ("AboutDialog") for its controller, which outlives
    /// it. Null when there is no such description.
    [[nodiscard]] virtual std::unique_ptr<Window> loadWindow(std::string_view strDescription,
                                                             WindowController& controller)
        VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Opens an address in the user's default browser.
    virtual void openUrl(const std::string& strUrl) VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Asks the application to end; returns before it does.
    virtual void terminate() VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Begins a process activity; absent on a platform without that service.
    [[nodiscard]] virtual std::optional<ProcessActivity>
    beginActivityWithOptions(std::uint64_t nOptions, const std::string& strReason)
        VELLUX_REQUIRES(mainThreadRole) = 0;
    /// The first of the user's application-support directories, without a trailing slash, absolute.
    virtual std::string applicationSupportDirectory() VELLUX_REQUIRES(mainThreadRole) = 0;
};

} // namespace vellux
