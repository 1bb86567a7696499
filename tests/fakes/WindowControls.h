// The window's fourteen controls, by name.
#pragma once

#include "VelluxWindowUi/VelluxWindowUi.h"

template <typename T> struct ControlRow {
    const char* pName;
    std::shared_ptr<T> (VelluxWindowUi::*getter)() const;
    void (VelluxWindowUi::*setter)(std::shared_ptr<T>);
};

namespace control_rows {

using Ui = VelluxWindowUi;

inline constexpr ControlRow<vellux::Button> kButtons[] = {
    {"buttonSelectSyncMode", &Ui::buttonSelectSyncMode, &Ui::setButtonSelectSyncMode},
    {"buttonSelectManualMode", &Ui::buttonSelectManualMode, &Ui::setButtonSelectManualMode},
    {"buttonFlashOnCall", &Ui::buttonFlashOnCall, &Ui::setButtonFlashOnCall},
    {"buttonLightOffOnAway", &Ui::buttonLightOffOnAway, &Ui::setButtonLightOffOnAway},
    {"buttonLightOffOnAvailable", &Ui::buttonLightOffOnAvailable, &Ui::setButtonLightOffOnAvailable},
    {"buttonConnect", &Ui::buttonConnect, &Ui::setButtonConnect},
};
inline constexpr ControlRow<vellux::TextField> kFields[] = {
    {"textFieldLyncServerName", &Ui::textFieldLyncServerName, &Ui::setTextFieldLyncServerName},
    {"textFieldUsername", &Ui::textFieldUsername, &Ui::setTextFieldUsername},
    {"textFieldPassword", &Ui::textFieldPassword, &Ui::setTextFieldPassword},
    {"textFieldLyncStatus", &Ui::textFieldLyncStatus, &Ui::setTextFieldLyncStatus},
};
inline constexpr ControlRow<vellux::ComboBox> kLists[] = {
    {"syncModeColorList", &Ui::syncModeColorList, &Ui::setSyncModeColorList},
    {"syncModeFlashSpeedList", &Ui::syncModeFlashSpeedList, &Ui::setSyncModeFlashSpeedList},
    {"manualModeColorList", &Ui::manualModeColorList, &Ui::setManualModeColorList},
    {"manualModeFlashSpeedList", &Ui::manualModeFlashSpeedList, &Ui::setManualModeFlashSpeedList},
};

void forEach(const auto& use) {
    for (const auto& row : kButtons)
        use(row);
    for (const auto& row : kFields)
        use(row);
    for (const auto& row : kLists)
        use(row);
}

} // namespace control_rows
