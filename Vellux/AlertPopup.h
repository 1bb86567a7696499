// The program's modal message box, available from any thread.
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

    /// Shows the alert on the main thread and returns the response code once the user has dismissed it. Any
    /// thread, with no lock held. Blocks until then, and first until any other alert is closed: alerts are
    /// shown one at a time, although an open alert keeps running the main thread's calls. During shutdown it
    /// returns without showing anything.
    std::int32_t display(const std::string& strTitle, const std::string& strMessage);

    /// While one exists on a thread, its calls of display() show nothing and return at once: for work that
    /// the program does by itself, when nobody may be there to dismiss an alert.
    class Silence {
    public:
        Silence();
        ~Silence();
        Silence(const Silence&) = delete;
        Silence& operator=(const Silence&) = delete;
    };

    /// For shutdown: threads that wait for an open alert to close stop waiting, and find the main thread's
    /// queue closed.
    void endWaiting();

    /// Shows the alert on the calling thread, which is the main thread.
    void displayAlert(const Texts& texts);

private:
    static vellux::SharedInstanceSlot<AlertPopup> sharedAlertPopupInstance;

    AlertPopup() = default;

    void waitUntilNoneIsOpen();
    bool isOpen();

    std::atomic<std::int32_t> nResult{0}; // response code of the alert closed last

    vellux::Mutex m_mutex;
    std::condition_variable_any m_closed;
    int m_nOpen VELLUX_GUARDED_BY(m_mutex) = 0;
    bool m_bEnding VELLUX_GUARDED_BY(m_mutex) = false;
};
