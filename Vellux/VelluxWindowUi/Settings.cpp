// The two files: the window state as plain text, the credentials encrypted and Base64 encoded.

#include "VelluxWindowUi/VelluxWindowUi.h"

#include "AES128Transform.h"
#include "MF_Base64Additions.h"
#include "ports/Platform.h"
#include "support/Files.h"
#include "support/Text.h"

namespace {

// Fields of the window-state file, in order, joined by ";".
enum UiStateField : std::size_t {
    kSyncMode,
    kFlashOnCall,
    kLightOffOnAway,
    kLightOffOnAvailable,
    kSyncColour,
    kSyncFlashSpeed,
    kManualColour,
    kManualFlashSpeed,
    kUiStateFields
};

constexpr const char* kDirectory = "/Vellux";
constexpr const char* kUiStateFile = "/uistate.txt";
constexpr const char* kConfigFile = "/configv31.bin";
constexpr const char* kSeparator = ";";
constexpr std::size_t kSettingsParts = 3; // server name, user name, password

std::string uiStateText(const std::array<std::int64_t, kUiStateFields>& fields) {
    std::string strText;
    for (const std::int64_t nField : fields) {
        if (!strText.empty())
            strText += kSeparator;
        strText += std::to_string(nField);
    }
    return strText;
}

} // namespace

std::array<VelluxWindowUi::SettingsFile, 2>
VelluxWindowUi::settingsFiles(const std::string& strSupportDirectory) {
    const std::string strDirectory = strSupportDirectory + kDirectory;
    return {{{strDirectory + kUiStateFile, false}, {strDirectory + kConfigFile, true}}};
}

void VelluxWindowUi::findOrCreateDirectory() {
    strVelluxDirectory = vellux::platform().desktop.applicationSupportDirectory() + kDirectory;
    vellux::createPrivateDirectory(strVelluxDirectory);
}

void VelluxWindowUi::restoreUiState() {
    strUiStateFile = strVelluxDirectory + kUiStateFile;
    vellux::createFileIfMissing(strUiStateFile, vellux::FileAccess::Default);
    const auto fields = vellux::split(vellux::readTextFile(strUiStateFile).value_or(""), kSeparator);
    if (fields.size() != kUiStateFields)
        return;

    const auto stateOf = [&fields](UiStateField field) {
        return fields[field] == "1" ? Button::kOn : Button::kOff;
    };
    controls.buttonFlashOnCall->setState(stateOf(kFlashOnCall));
    controls.buttonLightOffOnAway->setState(stateOf(kLightOffOnAway));
    controls.buttonLightOffOnAvailable->setState(stateOf(kLightOffOnAvailable));
    indexOfSyncModeColorList = vellux::integerValue(fields[kSyncColour]);
    indexOfSyncModeFlashSpeedList = vellux::integerValue(fields[kSyncFlashSpeed]);
    indexOfManualModeColorList = vellux::integerValue(fields[kManualColour]);
    indexOfManualModeFlashSpeedList = vellux::integerValue(fields[kManualFlashSpeed]);
    // Neither negative positions nor the speeds' are clamped. (kept-on-purpose:positions-unclamped)
    clampToItems(indexOfManualModeColorList, *controls.manualModeColorList);
    clampToItems(indexOfSyncModeColorList, *controls.syncModeColorList);
    controls.manualModeColorList->selectItemAtIndex(indexOfManualModeColorList);
    controls.manualModeFlashSpeedList->selectItemAtIndex(indexOfManualModeFlashSpeedList);
    if (fields[kSyncMode] == "1")
        setSyncMode(*controls.buttonSelectSyncMode);
    else
        setManualMode(*controls.buttonSelectManualMode);
}

void VelluxWindowUi::saveUiState() {
    vellux::assertMainThread();
    std::array<std::int64_t, kUiStateFields> fields{};
    fields[kSyncMode] = controls.buttonSelectSyncMode->state();
    fields[kFlashOnCall] = controls.buttonFlashOnCall->state();
    fields[kLightOffOnAway] = controls.buttonLightOffOnAway->state();
    fields[kLightOffOnAvailable] = controls.buttonLightOffOnAvailable->state();
    // Colours as remembered, speeds as selected: a refill leaves no colour selected.
    // (kept-on-purpose:colours-and-speeds)
    fields[kSyncColour] = indexOfSyncModeColorList;
    fields[kSyncFlashSpeed] = controls.syncModeFlashSpeedList->indexOfSelectedItem();
    fields[kManualColour] = indexOfManualModeColorList;
    fields[kManualFlashSpeed] = controls.manualModeFlashSpeedList->indexOfSelectedItem();
    vellux::writeFile(strUiStateFile, uiStateText(fields), vellux::FileAccess::Default);
}

void VelluxWindowUi::restoreSettings() {
    strConfigFile = strVelluxDirectory + kConfigFile;
    vellux::createFileIfMissing(strConfigFile, vellux::FileAccess::OwnerOnly);
    if (!readSettings()) {
        if (vellux::Window* const pWindow = vellux::platform().desktop.mainWindow())
            pWindow->makeKeyAndOrderFront();
        return;
    }
    controls.textFieldLyncServerName->setText(strFQDN.get());
    controls.textFieldUsername->setText(strUserName.get());
    controls.textFieldPassword->setText(strPassword.get());
    if (controls.buttonSelectSyncMode->state() == Button::kOn)
        signInByItself();
}

// Stored as typed, without escaping: a ";" in one of them makes a fourth part, and reading back fails
// silently. (kept-on-purpose:no-escaping)
void VelluxWindowUi::writeSettings(const std::string& strServer, const std::string& strUser,
                                   const std::string& strSecret) const {
    const std::string strText = strServer + kSeparator + strUser + kSeparator + strSecret;
    const auto encrypted = AES128EncryptedDataWithKey(
        std::span(reinterpret_cast<const std::uint8_t*>(strText.data()), strText.size()), aesKey);
    if (!encrypted)
        return;
    if (const auto strEncoded = base64String(*encrypted))
        vellux::writeFile(strConfigFile, *strEncoded, vellux::FileAccess::OwnerOnly);
}

// Reads the credentials from the file; false, and all three "", unless it holds exactly three parts.
bool VelluxWindowUi::readSettings() {
    std::vector<std::string> parts;
    if (const auto strEncoded = vellux::readTextFile(strConfigFile)) {
        const auto encrypted = dataWithBase64String(*strEncoded);
        const auto decrypted = encrypted ? AES128DecryptedDataWithKey(*encrypted, aesKey) : std::nullopt;
        if (decrypted) {
            const std::string strText(decrypted->begin(), decrypted->end());
            if (vellux::isUtf8(strText))
                parts = vellux::split(strText, kSeparator);
        }
    }
    const bool bComplete = parts.size() == kSettingsParts;
    parts.resize(kSettingsParts);
    strFQDN.set(bComplete ? parts[0] : "");
    strUserName.set(bComplete ? parts[1] : "");
    strPassword.set(bComplete ? parts[2] : "");
    return bComplete;
}
