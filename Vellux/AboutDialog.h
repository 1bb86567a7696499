// Controller of the About window.
#pragma once

#include "ports/Desktop.h"

#include <memory>

/// Owns its window, which the platform loads from the description "AboutDialog".
class AboutDialog : public vellux::WindowController {
public:
    /// Takes the window it controls; null when the platform has no such window.
    void initWithWindow(std::unique_ptr<vellux::Window> window) VELLUX_REQUIRES(vellux::mainThreadRole);

    /// The window it controls; null before initWithWindow.
    vellux::Window* window() const VELLUX_REQUIRES(vellux::mainThreadRole) { return m_window.get(); }

    /// Does nothing: the description holds all contents.
    void windowDidLoad() override;

    /// The About window may always be closed.
    bool windowShouldClose(const void* sender) override;

private:
    std::unique_ptr<vellux::Window> m_window VELLUX_GUARDED_BY(vellux::mainThreadRole);
};
