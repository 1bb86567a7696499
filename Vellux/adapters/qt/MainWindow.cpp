#include "adapters/qt/MainWindow.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/ButtonBinding.h"
#include "adapters/qt/ColourEntry.h"
#include "adapters/qt/ComboBoxBinding.h"
#include "adapters/qt/ConnectionHead.h"
#include "adapters/qt/ConnectionPanel.h"
#include "adapters/qt/FieldHintLines.h"
#include "adapters/qt/FilesLine.h"
#include "adapters/qt/LightHeader.h"
#include "adapters/qt/QuitKey.h"
#include "adapters/qt/TextFieldBinding.h"
#include "adapters/qt/WindowActions.h"
#include "adapters/qt/WindowFit.h"
#include "ui_MainWindow.h"

#include <QCloseEvent>

#include <utility>
#include <vector>

namespace vellux {

/// The form with all that keeps it up to date.
class MainWindow::View {
public:
    View(MainWindow& window, const Dependencies& dependencies);

    /// Fits the form to the style and the font in use.
    void fit();
    void placeFocus() { m_connection->placeFocus(); }
    void setNotice(const QString& strText);
    void aboutToBeShown(bool bShown) { bShown ? m_fit->beforeShow() : m_fit->beforeHide(); }
    /// The user closes the window or presses Escape.
    void askToClose() { m_dependencies.controller.windowShouldClose(m_window); }

private:
    void bindModesAndConnection();
    void bindChoices();
    void connectActions();

    using ButtonAction = void (VelluxWindowUi::*)(Button& sender);
    using BoxAction = void (VelluxWindowUi::*)(const Button* sender);
    using ListAction = void (VelluxWindowUi::*)(ComboBox& sender);
    void bind(QAbstractButton* pWidget, const std::shared_ptr<Button>& model, ButtonBinding::Action action);
    void bind(QAbstractButton* pWidget, const std::shared_ptr<Button>& model, ButtonAction action);
    void bind(QAbstractButton* pWidget, const std::shared_ptr<Button>& model, BoxAction action);
    void bind(ChoiceList* pWidget, const std::shared_ptr<ComboBox>& model, ListAction action,
              ComboBoxBinding::Look look = {});
    void bind(QLineEdit* pWidget, const std::shared_ptr<TextField>& model);

    MainWindow& m_window;
    const Dependencies m_dependencies;
    Ui::MainWindow m_form;
    // These write into the form, so they are destroyed before it, in reverse order.
    std::unique_ptr<ConnectionHead> m_following;
    std::unique_ptr<LightHeader> m_head;
    std::unique_ptr<ConnectionPanel> m_connection;
    std::unique_ptr<WindowFit> m_fit;
    std::unique_ptr<QuitKey> m_quitKey;
    std::unique_ptr<FieldHintLines> m_hints;
    std::unique_ptr<FilesLine> m_files;
    std::vector<std::unique_ptr<ControlBinding>> m_bindings;
};

MainWindow::View::View(MainWindow& window, const Dependencies& dependencies)
    : m_window(window), m_dependencies(dependencies) {
    m_form.setupUi(&window);
    // The status is read, not typed: no field background.
    QPalette palette;
    palette.setBrush(QPalette::Base, Qt::transparent);
    m_form.textFieldLyncStatus->setPalette(palette);
    m_form.panelHead->setBackgroundRole(QPalette::Base);

    m_following = std::make_unique<ConnectionHead>(m_dependencies, m_form);
    m_head = std::make_unique<LightHeader>(m_dependencies, m_form);
    m_connection = std::make_unique<ConnectionPanel>(m_dependencies, m_form);
    m_fit = std::make_unique<WindowFit>(window, *m_form.scrollArea);
    m_hints = std::make_unique<FieldHintLines>(m_dependencies, m_form);
    m_files = std::make_unique<FilesLine>(m_dependencies, m_form);
    setNotice({});
    bindModesAndConnection();
    bindChoices();
    connectActions();
    fit();
}

void MainWindow::View::bindModesAndConnection() {
    VelluxWindowUi& controller = m_dependencies.controller;
    bind(m_form.buttonSelectSyncMode, controller.buttonSelectSyncMode(), &VelluxWindowUi::setSyncMode);
    bind(m_form.buttonSelectManualMode, controller.buttonSelectManualMode(), &VelluxWindowUi::setManualMode);
    bind(m_form.textFieldLyncServerName, controller.textFieldLyncServerName());
    bind(m_form.textFieldUsername, controller.textFieldUsername());
    bind(m_form.textFieldPassword, controller.textFieldPassword());
    bind(m_form.buttonConnect, controller.buttonConnect(),
         [this](Button& sender) { m_connection->press(sender); });
    bind(m_form.textFieldLyncStatus, controller.textFieldLyncStatus());
}

void MainWindow::View::bindChoices() {
    using Controller = VelluxWindowUi;
    Controller& controller = m_dependencies.controller;
    bind(m_form.buttonFlashOnCall, controller.buttonFlashOnCall(), &Controller::onFlashOnCallCheckedChanged);
    bind(m_form.buttonLightOffOnAway, controller.buttonLightOffOnAway(), &Controller::onlightOffOnAway);
    bind(m_form.buttonLightOffOnAvailable, controller.buttonLightOffOnAvailable(),
         &Controller::onlightOffOnAvailable);
    const auto colour = [&controller](std::int32_t nIndex, const std::string& strItem) {
        return colourEntry(nIndex, strItem, controller.light().get().family);
    };
    bind(m_form.syncModeColorList, controller.syncModeColorList(), &Controller::onSyncModeColorListSelection,
         colour);
    bind(m_form.syncModeFlashSpeedList, controller.syncModeFlashSpeedList(),
         &Controller::onSyncModeFlashSpeedListSelection);
    bind(m_form.manualModeColorList, controller.manualModeColorList(),
         &Controller::onManualModeColorListSelection, colour);
    bind(m_form.manualModeFlashSpeedList, controller.manualModeFlashSpeedList(),
         &Controller::onManualModeFlashSpeedListSelection);
}

void MainWindow::View::connectActions() {
    VelluxWindowUi& controller = m_dependencies.controller;
    connect(m_form.buttonAbout, &QPushButton::clicked, &m_window,
            [&controller] { controller.onAbout(nullptr); });
    connect(m_form.buttonWebSite, &QPushButton::clicked, &m_window,
            [&controller] { controller.openLink(nullptr); });
    m_form.buttonDetails->setShortcut(Qt::Key_F12);
    connect(m_form.buttonMore, &QPushButton::clicked, &m_window, &MainWindow::moreAsked);
    connect(m_form.buttonDetails, &QPushButton::clicked, &m_window, &MainWindow::detailsAsked);
    const auto exit = [&controller] { controller.onExit(nullptr); };
    connect(m_form.buttonExit, &QPushButton::clicked, &m_window, exit);
    m_quitKey = std::make_unique<QuitKey>(m_window, exit);
}

void MainWindow::View::bind(QAbstractButton* pWidget, const std::shared_ptr<Button>& model,
                            ButtonBinding::Action action) {
    m_bindings.push_back(
        std::make_unique<ButtonBinding>(m_dependencies.mainThread, *pWidget, model, std::move(action)));
}

void MainWindow::View::bind(QAbstractButton* pWidget, const std::shared_ptr<Button>& model,
                            ButtonAction action) {
    bind(pWidget, model, [this, action](Button& sender) { (m_dependencies.controller.*action)(sender); });
}

void MainWindow::View::bind(QAbstractButton* pWidget, const std::shared_ptr<Button>& model,
                            BoxAction action) {
    bind(pWidget, model, [this, action](Button& sender) { (m_dependencies.controller.*action)(&sender); });
}

void MainWindow::View::bind(ChoiceList* pWidget, const std::shared_ptr<ComboBox>& model, ListAction action,
                            ComboBoxBinding::Look look) {
    m_bindings.push_back(std::make_unique<ComboBoxBinding>(
        m_dependencies.mainThread, *pWidget, model,
        [this, action](ComboBox& sender) { (m_dependencies.controller.*action)(sender); }, std::move(look)));
}

void MainWindow::View::bind(QLineEdit* pWidget, const std::shared_ptr<TextField>& model) {
    m_bindings.push_back(std::make_unique<TextFieldBinding>(m_dependencies.mainThread, *pWidget, model));
}

void MainWindow::View::setNotice(const QString& strText) {
    m_form.labelNotice->setText(breakable(strText));
    m_form.labelNotice->setAccessibleName(strText);
    m_form.labelNotice->setVisible(!strText.isEmpty());
}

void MainWindow::View::fit() {
    m_form.labelLampName->setFont(headingFont(m_window.font()));
    m_head->reserveRoom();
    m_connection->reserveRoom();
    // What belongs to a mode or a box is aligned with its text; what belongs together is closer together.
    const QStyle& style = *m_window.style();
    const int nIndent = style.pixelMetric(QStyle::PM_ExclusiveIndicatorWidth) +
                        style.pixelMetric(QStyle::PM_RadioButtonLabelSpacing);
    const int nGap = m_form.layoutConnection->verticalSpacing();
    m_form.layoutHead->setContentsMargins(nGap, nGap, nGap, nGap);
    m_form.layoutHeadLines->setContentsMargins(nIndent - nGap, 0, 0, 0);
    m_form.layoutSyncContent->setContentsMargins(nIndent, 0, 0, 0);
    m_form.layoutOnCall->setContentsMargins(0, nGap, 0, nGap);
    m_form.layoutCall->setContentsMargins(nIndent, 0, 0, 0);
    m_form.layoutManualContent->setContentsMargins(nIndent, 0, 0, 0);
    m_form.layoutFoot->setContentsMargins(0, nGap, 0, 0);
}

MainWindow::MainWindow(const Dependencies& dependencies)
    : m_view(std::make_unique<View>(*this, dependencies)) {}

MainWindow::~MainWindow() = default;

void MainWindow::makeKeyAndOrderFront() {
    bringToFront(*this);
}

void MainWindow::orderOut() {
    hide();
}

void MainWindow::setLevel(WindowLevel level) {
    setWindowLevel(*this, level);
}

// The controller hides the window and says that it must not close. The event is accepted anyway: ignoring it
// would block the end of the session, and a hidden window loses nothing.
void MainWindow::closeEvent(QCloseEvent* pEvent) {
    m_view->askToClose();
    pEvent->accept();
}

// A shortcut would also be taken by a list that Escape has just closed.
void MainWindow::keyPressEvent(QKeyEvent* pEvent) {
    if (pEvent->key() == Qt::Key_Escape)
        m_view->askToClose();
    else
        QWidget::keyPressEvent(pEvent);
}

void MainWindow::setNotice(const QString& strText) {
    m_view->setNotice(strText);
}

void MainWindow::setVisible(bool bVisible) {
    if (bVisible != isVisible())
        m_view->aboutToBeShown(bVisible);
    QWidget::setVisible(bVisible);
}

void MainWindow::showEvent(QShowEvent* pEvent) {
    if (!pEvent->spontaneous()) {
        m_view->placeFocus();
        setNotice({}); // of before
    }
    QWidget::showEvent(pEvent);
}

void MainWindow::paintEvent(QPaintEvent* pEvent) {
    QWidget::paintEvent(pEvent);
    if (!std::exchange(m_bPainted, true))
        emit firstPaint();
}

void MainWindow::changeEvent(QEvent* pEvent) {
    const bool bLooks = pEvent->type() == QEvent::FontChange || pEvent->type() == QEvent::StyleChange;
    if (bLooks && m_view != nullptr)
        m_view->fit();
    QWidget::changeEvent(pEvent);
}

} // namespace vellux
