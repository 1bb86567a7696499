#include "AlertPopup.h"

#include "ports/Platform.h"

#include <memory>

vellux::SharedInstanceSlot<AlertPopup> AlertPopup::sharedAlertPopupInstance;

namespace {
thread_local int nSilences = 0;
} // namespace

AlertPopup::Silence::Silence() {
    ++nSilences;
}

AlertPopup::Silence::~Silence() {
    --nSilences;
}

AlertPopup& AlertPopup::sharedAlertPopup() {
    return vellux::sharedInstance(sharedAlertPopupInstance, [] { return new AlertPopup; });
}

std::int32_t AlertPopup::display(const std::string& strTitle, const std::string& strMessage) {
    if (nSilences > 0)
        return nResult;
    vellux::MainThread& mainThread = vellux::platform().mainThread;
    if (mainThread.isCurrent()) {
        displayAlert({strTitle, strMessage});
        return nResult;
    }
    const auto bShown = std::make_shared<bool>(false); // main's until runAndWait has returned true
    // An open alert's loop may run this call; it then shows nothing and is queued again once that alert is
    // closed.
    bool bRan = true;
    while (bRan && !*bShown) {
        waitUntilNoneIsOpen();
        bRan = mainThread.runAndWait([this, bShown, texts = Texts{strTitle, strMessage}] {
            if (isOpen())
                return;
            displayAlert(texts);
            *bShown = true;
        });
    }
    return nResult; // of the alert closed last, perhaps another thread's; kept-on-purpose:last-answer
}

void AlertPopup::displayAlert(const Texts& texts) {
    vellux::assertMainThread();
    vellux::Alert alert;
    alert.buttons = {"OK"};
    alert.strMessageText = texts[0];
    alert.strInformativeText = texts[1];
    {
        const vellux::ScopedLock lock(m_mutex);
        ++m_nOpen;
    }
    nResult = vellux::platform().desktop.runModal(alert);
    const vellux::ScopedLock lock(m_mutex);
    --m_nOpen;
    m_closed.notify_all();
}

void AlertPopup::endWaiting() {
    const vellux::ScopedLock lock(m_mutex);
    m_bEnding = true;
    m_closed.notify_all();
}

void AlertPopup::waitUntilNoneIsOpen() {
    const vellux::ScopedLock lock(m_mutex);
    while (m_nOpen > 0 && !m_bEnding)
        m_closed.wait(m_mutex);
}

bool AlertPopup::isOpen() {
    const vellux::ScopedLock lock(m_mutex);
    return m_nOpen > 0;
}
