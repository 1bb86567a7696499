// The fixture of the window's tests: the real controller, window, desktop and loop on fake lights and
// servers.
#pragma once

#include "adapters/qt/MainWindow.h"
#include "adapters/qt/QtDesktop.h"
#include "app/Choices.h"
#include "app/ConnectionLog.h"
#include "app/Following.h"
#include "fakes/FakeTimers.h"
#include "fakes/ProgramFixture.h"

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

#include <stdexcept>

/// The program has started and shows its window. The desktop's ends are journalled as "ended"; what a user
/// does is done by mouse and keys on widgets found by name.
class WindowFixture : public ProgramFixture {
protected:
    WindowFixture();
    ~WindowFixture() override { endProgram(); }

    void runPending() override { QCoreApplication::processEvents(); }
    bool isConnectUsable(const std::string& strTitle) override;
    /// Runs `write` on a thread of its own and lets the window show what it wrote.
    void onWorker(const std::function<void()>& write);

    template <typename T> T& widget(const char* pName) {
        T* const pWidget = window.findChild<T*>(pName);
        if (pWidget == nullptr)
            throw std::runtime_error(pName);
        return *pWidget;
    }
    QString textOf(const char* pLabel) { return widget<QLabel>(pLabel).text(); }
    /// What a screen reader says of a widget.
    QString readOut(const char* pName, QAccessible::Text text) {
        return QAccessible::queryAccessibleInterface(&widget<QWidget>(pName))->text(text);
    }
    void click(const char* pButton);
    void type(const char* pField, const char* pText);
    /// Opens the list, moves to an entry and chooses it.
    void choose(const char* pList, int nIndex);
    /// Calls back for every message box that opens, from within its loop; closes it with Escape afterwards.
    void onAlert(std::function<void(QMessageBox&)> callback);
    void connectByHand();

    /// What a window is made from.
    vellux::MainWindow::Dependencies dependencies(const std::string& strDirectory);

    FakeTimers timers;
    vellux::ConnectionLog log;
    vellux::Observable<vellux::Choices> choices;
    vellux::Following following;
    vellux::MainWindow window;
    vellux::QtDesktop qtDesktop;

private:
    QTimer m_alertWatch;
    QPointer<QMessageBox> m_pSeen;
};
