// The main window: a view of the controller's controls, and of the light beside them.
#pragma once

#include "ports/Desktop.h"
#include "threads/MainThread.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <string>

class VelluxWindowUi;

namespace vellux {

class ConnectionLog;
class Following;
class Timers;
struct Choices;
template <typename T> class Observable;

/// Shows the fourteen controls, the lamp, the light and the following, and passes the user's actions to
/// the controller. Main thread only; any thread may write the values that it shows. Closing hides it.
class MainWindow : public QWidget, public Window {
    Q_OBJECT
public:
    /// What the window is made from; the objects outlive it.
    struct Dependencies {
        MainThread& mainThread;
        VelluxWindowUi& controller;
        Following& following;
        ConnectionLog& log;
        Observable<Choices>& choices;
        Timers& timers;
        /// A command for a terminal that lets this user open a light of the given vendor and product.
        std::function<std::string(std::uint16_t nVendorID, std::uint16_t nProductID)> remedy;
        /// The user's application-support directory.
        std::string strDirectory;
    };

    /// Hidden at first. Needs no installed platform before the user does something.
    explicit MainWindow(const Dependencies& dependencies);
    /// After every worker thread has ended.
    ~MainWindow() override;

    void makeKeyAndOrderFront() override;
    void orderOut() override;
    void setLevel(WindowLevel level) override;

    /// Says something in a line of its own, until it says something else or is hidden; "" for nothing.
    void setNotice(const QString& strText);

    /// Shown again, it stands where it stood.
    void setVisible(bool bVisible) override;

signals:
    /// The user wants to see the page of choices.
    void moreAsked();
    /// The user wants to see the details.
    void detailsAsked();
    /// The window was painted for the first time.
    void firstPaint();

protected:
    void keyPressEvent(QKeyEvent* pEvent) override;
    void closeEvent(QCloseEvent* pEvent) override;
    void showEvent(QShowEvent* pEvent) override;
    void paintEvent(QPaintEvent* pEvent) override;
    void changeEvent(QEvent* pEvent) override;

private:
    class View;
    std::unique_ptr<View> m_view;
    bool m_bPainted = false;
};

} // namespace vellux
