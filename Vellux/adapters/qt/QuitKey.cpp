#include "adapters/qt/QuitKey.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QShortcut>

#include <utility>

namespace vellux {

namespace {
constexpr QKeyCombination kQuit = Qt::CTRL | Qt::Key_Q;
} // namespace

QuitKey::QuitKey(QWidget& window, std::function<void()> quit) : m_quit(std::move(quit)) {
    connect(new QShortcut(kQuit, &window), &QShortcut::activated, this, m_quit);
    QCoreApplication::instance()->installEventFilter(this);
}

bool QuitKey::eventFilter(QObject*, QEvent* pEvent) {
    if (pEvent->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(pEvent)->keyCombination() != kQuit)
        return false;
    m_quit();
    return true;
}

} // namespace vellux
