#include "adapters/dbus/HiddenStartNotice.h"

#include <utility>

namespace vellux {

HiddenStartNotice::HiddenStartNotice(Dependencies dependencies, std::chrono::milliseconds longestWait)
    : m_dependencies(std::move(dependencies)), m_host([this](bool bPresent) {
          if (bPresent) // one that goes again was seen
              m_timer.stop();
      }) {
    m_timer.setSingleShot(true);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
        if (!m_dependencies.wasTold())
            m_dependencies.tell();
    });
    m_timer.start(longestWait);
}

} // namespace vellux
