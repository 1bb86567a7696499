#include "adapters/qt/QtMainThread.h"

#include <QCoreApplication>
#include <QEvent>

namespace vellux {

namespace {

const auto kWake = static_cast<QEvent::Type>(QEvent::registerEventType());

} // namespace

QtMainThread::QtMainThread() : CallQueue([this] { m_receiver.wake(); }), m_receiver(*this) {}

QtMainThread::~QtMainThread() = default;

void QtMainThread::Receiver::wake() {
    if (!m_bWoken.exchange(true))
        QCoreApplication::postEvent(this, new QEvent(kWake));
}

bool QtMainThread::Receiver::event(QEvent* event) {
    if (event->type() != kWake)
        return QObject::event(event);
    m_bWoken = false; // first, so that a call queued meanwhile wakes again
    m_queue.runPending();
    return true;
}

} // namespace vellux
