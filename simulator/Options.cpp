#include "Options.h"

namespace vellux::simulator {

namespace {

struct LightRow {
    std::string_view strName;
    LightModel model;
};

constexpr LightRow kLights[] = {
    {"1", LightModel::Framed}, {"2", LightModel::Plain}, {"v30", LightModel::V30}};

std::optional<LightModel> lightNamed(std::string_view strName) {
    for (const LightRow& row : kLights)
        if (row.strName == strName)
            return row.model;
    return std::nullopt;
}

} // namespace

std::variant<Options, OptionsError> readOptions(int nArguments, const char* const* arguments) {
    Options options;
    for (int n = 1; n < nArguments; ++n) {
        const std::string_view strOption = arguments[n];
        if (strOption == "--help") {
            options.bHelp = true;
            continue;
        }
        if (strOption == "--headless")
            continue; // there is no window yet that it could be without
        if (strOption != "--script" && strOption != "--light")
            return OptionsError{"unknown option " + std::string(strOption)};
        if (n + 1 == nArguments)
            return OptionsError{"option " + std::string(strOption) + " needs a value"};
        const std::string strValue = arguments[++n];
        if (strOption == "--script") {
            options.strScriptFile = strValue;
        } else if (const auto light = lightNamed(strValue)) {
            options.light = *light;
        } else {
            return OptionsError{"option --light takes 1, 2 or v30, not " + strValue};
        }
    }
    return options;
}

std::string_view helpText() {
    return "Usage: vellux-simulator [--headless] [--script FILE] [--light 1|2|v30]\n"
           "\n"
           "Plays a day of presence through the real program, against a presence server of its own on\n"
           "this machine and a virtual light, and prints one line for each effect.\n"
           "\n"
           "  --headless     without a window (there is none yet)\n"
           "  --script FILE  plays the day that FILE describes (docs/simulator.md) instead of a working day\n"
           "  --light KIND   the light: 1 framed codes, 2 plain codes, v30 levels (v30 if not given)\n"
           "  --help         prints this text\n"
           "\n"
           "Exit status: 0 when the day went as the script expects, 1 when it did not, 2 when the command\n"
           "line or the script can't be understood.\n";
}

} // namespace vellux::simulator
