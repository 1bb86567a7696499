#include "day/UserActions.h"

#include "VelluxWindowUi/VelluxWindowUi.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace vellux::simulator {

namespace {

template <typename T> using Getter = std::shared_ptr<T> (VelluxWindowUi::*)() const;

struct BoxRow {
    std::string_view strName;
    Getter<Button> get;
    void (*act)(VelluxWindowUi& controller, Button& sender);
};

constexpr BoxRow kBoxes[] = {
    {"buttonFlashOnCall", &VelluxWindowUi::buttonFlashOnCall,
     [](VelluxWindowUi& controller, Button& sender) { controller.onFlashOnCallCheckedChanged(sender); }},
    {"buttonLightOffOnAway", &VelluxWindowUi::buttonLightOffOnAway,
     [](VelluxWindowUi& controller, Button& sender) { controller.onlightOffOnAway(&sender); }},
    {"buttonLightOffOnAvailable", &VelluxWindowUi::buttonLightOffOnAvailable,
     [](VelluxWindowUi& controller, Button& sender) { controller.onlightOffOnAvailable(&sender); }},
};

struct ListRow {
    std::string_view strName;
    Getter<ComboBox> get;
    void (VelluxWindowUi::*act)(ComboBox& sender);
};

constexpr ListRow kLists[] = {
    {"syncModeColorList", &VelluxWindowUi::syncModeColorList, &VelluxWindowUi::onSyncModeColorListSelection},
    {"syncModeFlashSpeedList", &VelluxWindowUi::syncModeFlashSpeedList,
     &VelluxWindowUi::onSyncModeFlashSpeedListSelection},
    {"manualModeColorList", &VelluxWindowUi::manualModeColorList,
     &VelluxWindowUi::onManualModeColorListSelection},
    {"manualModeFlashSpeedList", &VelluxWindowUi::manualModeFlashSpeedList,
     &VelluxWindowUi::onManualModeFlashSpeedListSelection},
};

template <typename T> struct ControlRow {
    std::string_view strName;
    Getter<T> get;
};

constexpr ControlRow<Button> kOtherButtons[] = {
    {"buttonSelectSyncMode", &VelluxWindowUi::buttonSelectSyncMode},
    {"buttonSelectManualMode", &VelluxWindowUi::buttonSelectManualMode},
    {"buttonConnect", &VelluxWindowUi::buttonConnect},
};

constexpr ControlRow<TextField> kTextFields[] = {
    {"textFieldLyncServerName", &VelluxWindowUi::textFieldLyncServerName},
    {"textFieldUsername", &VelluxWindowUi::textFieldUsername},
    {"textFieldPassword", &VelluxWindowUi::textFieldPassword},
    {"textFieldLyncStatus", &VelluxWindowUi::textFieldLyncStatus},
};

template <typename Row, std::size_t N> const Row* rowNamed(const Row (&rows)[N], std::string_view strName) {
    const auto* const pRow = std::find_if(std::begin(rows), std::end(rows),
                                          [&](const Row& row) { return row.strName == strName; });
    return pRow == std::end(rows) ? nullptr : pRow;
}

// The control with a name; null when there is none.
std::shared_ptr<Control> controlNamed(const VelluxWindowUi& controller, std::string_view strName) {
    if (const auto* const pRow = rowNamed(kBoxes, strName))
        return (controller.*pRow->get)();
    if (const auto* const pRow = rowNamed(kLists, strName))
        return (controller.*pRow->get)();
    if (const auto* const pRow = rowNamed(kOtherButtons, strName))
        return (controller.*pRow->get)();
    if (const auto* const pRow = rowNamed(kTextFields, strName))
        return (controller.*pRow->get)();
    return nullptr;
}

Refusal disabled(std::string_view strName) {
    return std::string(strName) + " is disabled";
}

// The position of an entry in a list; ComboBox::kNothing when it is not there.
std::int64_t positionOf(const std::variant<std::string, std::int64_t>& entry, const ComboBox& list) {
    if (const auto* const pPosition = std::get_if<std::int64_t>(&entry))
        return *pPosition < list.numberOfItems() ? *pPosition : ComboBox::kNothing;
    const std::vector<std::string> items = list.items();
    const auto found = std::find(items.begin(), items.end(), std::get<std::string>(entry));
    return found == items.end() ? ComboBox::kNothing : found - items.begin();
}

} // namespace

bool isBox(std::string_view strName) {
    return rowNamed(kBoxes, strName) != nullptr;
}

bool isList(std::string_view strName) {
    return rowNamed(kLists, strName) != nullptr;
}

bool isControl(std::string_view strName) {
    return isBox(strName) || isList(strName) || rowNamed(kOtherButtons, strName) != nullptr ||
           rowNamed(kTextFields, strName) != nullptr;
}

bool isEnabled(const VelluxWindowUi& controller, std::string_view strName) {
    const auto control = controlNamed(controller, strName);
    return control != nullptr && control->isEnabled();
}

Refusal setBox(VelluxWindowUi& controller, std::string_view strBox, bool bOn) {
    const BoxRow& row = *rowNamed(kBoxes, strBox);
    const auto box = (controller.*row.get)();
    if (!box->isEnabled())
        return disabled(strBox);
    box->setState(bOn ? Button::kOn : Button::kOff);
    row.act(controller, *box);
    return std::nullopt;
}

Refusal selectEntry(VelluxWindowUi& controller, std::string_view strList,
                    const std::variant<std::string, std::int64_t>& entry) {
    const ListRow& row = *rowNamed(kLists, strList);
    const auto list = (controller.*row.get)();
    if (!list->isEnabled())
        return disabled(strList);
    const std::int64_t nPosition = positionOf(entry, *list);
    if (nPosition == ComboBox::kNothing)
        return std::string(strList) + " has no such entry";
    list->selectItemAtIndex(nPosition);
    (controller.*row.act)(*list);
    return std::nullopt;
}

Refusal selectMode(VelluxWindowUi& controller, bool bManual) {
    const auto button = bManual ? controller.buttonSelectManualMode() : controller.buttonSelectSyncMode();
    const auto other = bManual ? controller.buttonSelectSyncMode() : controller.buttonSelectManualMode();
    if (!button->isEnabled())
        return disabled(bManual ? "buttonSelectManualMode" : "buttonSelectSyncMode");
    button->setState(Button::kOn);
    other->setState(Button::kOff);
    if (bManual)
        controller.setManualMode(*button);
    else
        controller.setSyncMode(*button);
    return std::nullopt;
}

Refusal enterCredentials(VelluxWindowUi& controller, const Credentials& credentials) {
    const struct {
        const char* strName;
        std::shared_ptr<TextField> field;
        const std::string& strText;
    } entries[] = {
        {"textFieldLyncServerName", controller.textFieldLyncServerName(), credentials.strServer},
        {"textFieldUsername", controller.textFieldUsername(), credentials.strUserName},
        {"textFieldPassword", controller.textFieldPassword(), credentials.strPassword},
    };
    for (const auto& entry : entries) {
        if (!entry.field->isEnabled())
            return disabled(entry.strName);
        entry.field->setText(entry.strText);
    }
    return std::nullopt;
}

Refusal pressConnect(VelluxWindowUi& controller, std::string_view strTitle) {
    const auto button = controller.buttonConnect();
    if (!button->isEnabled())
        return disabled("buttonConnect");
    if (const std::string strNow = button->title(); strNow != strTitle)
        return "the button says " + strNow + ", not " + std::string(strTitle);
    controller.onConnectButtonClicked(*button);
    return std::nullopt;
}

} // namespace vellux::simulator
