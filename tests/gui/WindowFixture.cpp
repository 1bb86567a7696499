#include "WindowFixture.h"

#include "adapters/qt/QtMainThread.h"

#include <QAbstractItemView>

WindowFixture::WindowFixture()
    : ProgramFixture(std::make_unique<vellux::QtMainThread>(), kNoProgram),
      following(mainThread, ui(), client()), window(dependencies(directory.string())),
      qtDesktop(
          window,
          {directory.string(), [this] { ui().openLink(nullptr); }, [this] { journal.add("ended"); }, {}}) {
    makeProgram(transport, qtDesktop);
    program->show(window);
    program->start();
    runUntil([this] { return window.isActiveWindow(); }, "the window");
    journal.clear();
}

vellux::MainWindow::Dependencies WindowFixture::dependencies(const std::string& strDirectory) {
    const auto remedy = [](std::uint16_t nVendorID, std::uint16_t nProductID) {
        return "permit " + std::to_string(nVendorID) + ":" + std::to_string(nProductID) + " 'a  b'";
    };
    return {mainThread, ui(), following, log, choices, timers, remedy, strDirectory};
}

bool WindowFixture::isConnectUsable(const std::string& strTitle) {
    const auto& button = widget<QPushButton>("buttonConnect");
    return ProgramFixture::isConnectUsable(strTitle) && button.isEnabled() &&
           QString(button.text()).remove('&').toStdString() == strTitle;
}

void WindowFixture::onWorker(const std::function<void()>& write) {
    std::atomic<bool> bWritten{false};
    std::jthread worker([&] {
        write();
        bWritten = true;
    });
    runUntil([&] { return bWritten.load(); }, "the worker");
    runPending();
}

void WindowFixture::click(const char* pButton) {
    auto& button = widget<QAbstractButton>(pButton);
    const int nInside = button.height() / 2; // check and radio buttons are pressed at their left end
    QTest::mouseClick(&button, Qt::LeftButton, {}, {nInside, nInside});
}

void WindowFixture::type(const char* pField, const char* pText) {
    widget<QLineEdit>(pField).setFocus();
    QTest::keyClicks(&widget<QLineEdit>(pField), pText);
}

void WindowFixture::choose(const char* pList, int nIndex) {
    auto& list = widget<QComboBox>(pList);
    list.showPopup();
    list.view()->setCurrentIndex(list.model()->index(nIndex, 0));
    QTest::keyClick(list.view(), Qt::Key_Return);
    runPending();
}

void WindowFixture::onAlert(std::function<void(QMessageBox&)> callback) {
    QObject::connect(&m_alertWatch, &QTimer::timeout, [this, callback = std::move(callback)] {
        auto* const pBox = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (pBox == nullptr || pBox == m_pSeen)
            return;
        m_pSeen = pBox;
        callback(*pBox);
        QTest::keyClick(pBox, Qt::Key_Escape);
        m_pSeen = nullptr;
    });
    m_alertWatch.start(1);
}

void WindowFixture::connectByHand() {
    scriptServer(R"({"availability":"Busy","activity":"in-a-meeting"})");
    type("textFieldLyncServerName", "lync.example");
    type("textFieldUsername", "CORP\\pat");
    type("textFieldPassword", "secret");
    QTest::keyClick(&widget<QLineEdit>("textFieldPassword"), Qt::Key_Return);
    runUntilConnectShows("Disconnect");
    runPending();
    journal.clear();
}
