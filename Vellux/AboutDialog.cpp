#include "AboutDialog.h"

#include <utility>

void AboutDialog::initWithWindow(std::unique_ptr<vellux::Window> window) {
    m_window = std::move(window);
}

void AboutDialog::windowDidLoad() {} // kept-on-purpose:about-controller

bool AboutDialog::windowShouldClose(const void*) {
    return true;
}
