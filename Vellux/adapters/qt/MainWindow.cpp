#include "adapters/qt/MainWindow.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/ButtonBinding.h"
#include "adapters/qt/ChannelStatusLine.h"
#include "adapters/qt/ComboBoxBinding.h"
#include "adapters/qt/LightHeader.h"
#include "adapters/qt/TextFieldBinding.h"
#include "adapters/qt/WindowActions.h"
#include "model/ConnectTitle.h"
#include "ui_MainWindow.h"

#include <QCloseEvent>
#include <QShortcut>

#include <initializer_list>
#include <utility>
#include <vector>

namespace vellux {

namespace {

// Makes a button wide enough for all of its titles, so that nothing moves when the title changes.
void reserveWidth(QPushButton& button, std::initializer_list<const char*> titles) {
    const QString strNow = button.text();
    int nWidth = 0;
    for (const char* const pTitle : titles) {
        button.setText(QLatin1String(pTitle));
        nWidth = qMax(nWidth, button.sizeHint().width());
    }
    button.setText(strNow);
    button.setMinimumWidth(nWidth);
}

} // namespace

/// The form with all that keeps it up to date.
class MainWindow::View {
public:
    View(MainWindow& window, const Dependencies& dependencies);

    /// Fits the form to the style and the font in use.
    void fit();
    /// On the button of the current mode, so that there is no caret in an idle window.
    void placeFocus();
    /// The user closes the window or presses Escape.
    void askToClose() { m_dependencies.controller.windowShouldClose(m_window); }
    bool isFollowingLost() const { return m_following->isLost(); }

private:
    void bindModes();
    void bindConnection();
    void bindChoices();
    void connectActions();

    using ButtonAction = void (VelluxWindowUi::*)(Button& sender);
    using BoxAction = void (VelluxWindowUi::*)(const Button* sender);
    using ListAction = void (VelluxWindowUi::*)(ComboBox& sender);
    void bind(QAbstractButton* pWidget, const std::shared_ptr<Button>& model, ButtonBinding::Action action);
    void bind(QAbstractButton* pWidget, const std::shared_ptr<Button>& model, ButtonAction action);
    void bind(QAbstractButton* pWidget, const std::shared_ptr<Button>& model, BoxAction action);
    void bind(QComboBox* pWidget, const std::shared_ptr<ComboBox>& model, ListAction action);
    void bind(QLineEdit* pWidget, const std::shared_ptr<TextField>& model);

    MainWindow& m_window;
    const Dependencies m_dependencies;
    Ui::MainWindow m_form;
    // These write into the form, so they are destroyed before it, in reverse order.
    std::unique_ptr<ChannelStatusLine> m_following;
    std::unique_ptr<LightHeader> m_head;
    std::vector<std::unique_ptr<ControlBinding>> m_bindings;
};

MainWindow::View::View(MainWindow& window, const Dependencies& dependencies)
    : m_window(window), m_dependencies(dependencies) {
    m_form.setupUi(&window);
    // The status is read, not typed: no field background.
    QPalette palette;
    palette.setBrush(QPalette::Base, Qt::transparent);
    m_form.textFieldLyncStatus->setPalette(palette);

    m_following = std::make_unique<ChannelStatusLine>(m_dependencies, m_form,
                                                      [this] { emit m_window.followingLost(); });
    m_head = std::make_unique<LightHeader>(m_dependencies, m_form);
    bindModes();
    bindConnection();
    bindChoices();
    connectActions();
    fit();
}

void MainWindow::View::bindModes() {
    VelluxWindowUi& controller = m_dependencies.controller;
    bind(m_form.buttonSelectSyncMode, controller.buttonSelectSyncMode(), &VelluxWindowUi::setSyncMode);
    bind(m_form.buttonSelectManualMode, controller.buttonSelectManualMode(), &VelluxWindowUi::setManualMode);
}

void MainWindow::View::bindConnection() {
    VelluxWindowUi& controller = m_dependencies.controller;
    bind(m_form.textFieldLyncServerName, controller.textFieldLyncServerName());
    bind(m_form.textFieldUsername, controller.textFieldUsername());
    bind(m_form.textFieldPassword, controller.textFieldPassword());
    bind(m_form.buttonConnect, controller.buttonConnect(), &VelluxWindowUi::onConnectButtonClicked);
    bind(m_form.textFieldLyncStatus, controller.textFieldLyncStatus());
}

void MainWindow::View::bindChoices() {
    using Controller = VelluxWindowUi;
    Controller& controller = m_dependencies.controller;
    bind(m_form.buttonFlashOnCall, controller.buttonFlashOnCall(), &Controller::onFlashOnCallCheckedChanged);
    bind(m_form.buttonLightOffOnAway, controller.buttonLightOffOnAway(), &Controller::onlightOffOnAway);
    bind(m_form.buttonLightOffOnAvailable, controller.buttonLightOffOnAvailable(),
         &Controller::onlightOffOnAvailable);
    bind(m_form.syncModeColorList, controller.syncModeColorList(), &Controller::onSyncModeColorListSelection);
    bind(m_form.syncModeFlashSpeedList, controller.syncModeFlashSpeedList(),
         &Controller::onSyncModeFlashSpeedListSelection);
    bind(m_form.manualModeColorList, controller.manualModeColorList(),
         &Controller::onManualModeColorListSelection);
    bind(m_form.manualModeFlashSpeedList, controller.manualModeFlashSpeedList(),
         &Controller::onManualModeFlashSpeedListSelection);
}

void MainWindow::View::connectActions() {
    VelluxWindowUi& controller = m_dependencies.controller;
    connect(m_form.buttonAbout, &QPushButton::clicked, &m_window,
            [&controller] { controller.onAbout(nullptr); });
    connect(m_form.buttonWebSite, &QPushButton::clicked, &m_window,
            [&controller] { controller.openLink(nullptr); });
    const auto exit = [&controller] { controller.onExit(nullptr); };
    connect(m_form.buttonExit, &QPushButton::clicked, &m_window, exit);
    connect(new QShortcut(Qt::CTRL | Qt::Key_Q, &m_window), &QShortcut::activated, &m_window, exit);
    connect(new QShortcut(Qt::Key_Escape, &m_window), &QShortcut::activated, &m_window,
            [this] { askToClose(); });
    for (const QLineEdit* const pField :
         {m_form.textFieldLyncServerName, m_form.textFieldUsername, m_form.textFieldPassword})
        connect(pField, &QLineEdit::returnPressed, m_form.buttonConnect, [this] {
            if (m_dependencies.controller.buttonConnect()->title() ==
                kTitleConnect) // never by mistake the other one
                m_form.buttonConnect->click();
        });
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

void MainWindow::View::bind(QComboBox* pWidget, const std::shared_ptr<ComboBox>& model, ListAction action) {
    m_bindings.push_back(std::make_unique<ComboBoxBinding>(
        m_dependencies.mainThread, *pWidget, model,
        [this, action](ComboBox& sender) { (m_dependencies.controller.*action)(sender); }));
}

void MainWindow::View::bind(QLineEdit* pWidget, const std::shared_ptr<TextField>& model) {
    m_bindings.push_back(std::make_unique<TextFieldBinding>(m_dependencies.mainThread, *pWidget, model));
}

void MainWindow::View::placeFocus() {
    const bool bManual = m_form.buttonSelectManualMode->isChecked();
    (bManual ? m_form.buttonSelectManualMode : m_form.buttonSelectSyncMode)->setFocus();
}

void MainWindow::View::fit() {
    m_form.labelLampName->setFont(headingFont(m_window.font()));
    QLineEdit* const fields[] = {m_form.textFieldLyncServerName, m_form.textFieldUsername,
                                 m_form.textFieldPassword};
    int nHeight = 0; // of the tallest: placeholders have a font of their own
    for (const QLineEdit* const pField : fields)
        nHeight = qMax(nHeight, pField->sizeHint().height());
    for (QLineEdit* const pField : fields)
        pField->setMinimumHeight(nHeight);
    m_head->reserveRoom();
    reserveWidth(*m_form.buttonConnect, {kTitleConnect, kTitleConnecting, kTitleDisconnect});
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

bool MainWindow::isFollowingLost() const {
    return m_view->isFollowingLost();
}

// The controller hides the window and says that it must not close. The event is accepted anyway: ignoring it
// would block the end of the session, and a hidden window loses nothing.
void MainWindow::closeEvent(QCloseEvent* pEvent) {
    m_view->askToClose();
    pEvent->accept();
}

void MainWindow::showEvent(QShowEvent* pEvent) {
    if (!pEvent->spontaneous())
        m_view->placeFocus();
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
