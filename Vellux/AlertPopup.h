// The program's modal message box, to be had from any thread.
#pragma once

#include "threads/Mutex.h"
#include "threads/SharedInstance.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <string>

class AlertPopup {
public:
    /// The one instance. Any thread.
    static AlertPopup& sharedAlertPopup();
    AlertPopup(const AlertPopup&) = delete;
    AlertPopup& operator=(const AlertPopup&) = delete;

    /// Title and message, in this order.
    using Texts = std::array<std::string, 2>;

    /// Shows the alert on the main thread and returns the response code when the user has dismissed it. Any
    /// thread, with no lock held; blocks until then, and before that until another thread's alert is closed:
    /// alerts come one after the other, also where a modal alert goes on running the main thread's calls.
    /// While the program ends it returns without showing anything.
    std::int32_t display(const std::string& strTitle, const std::string& strMessage);

    /// The program ends: those who wait for an open alert's end go on, and find that the main thread takes no
    /// calls.
    void endWaiting();

    /// Shows the alert on the calling thread, which is the main thread.
    void displayAlert(const Texts& texts);

private:
    static vellux::SharedInstanceSlot<AlertPopup> sharedAlertPopupInstance;

    AlertPopup() = default;

    void waitUntilNoneIsOpen();
    bool isOpen();

    std::atomic<std::int32_t> nResult{0}; // response code of the alert shown last

    vellux::Mutex m_mutex;
    std::condition_variable_any m_closed;
    int m_nOpen VELLUX_GUARDED_BY(m_mutex) = 0;
    bool m_bEnding VELLUX_GUARDED_BY(m_mutex) = false;
};
