#include "Options.h"

#include <array>

namespace vellux::simulator {

namespace {

template <typename Value> struct Row {
    std::string_view strName;
    Value value;
};

constexpr std::array<Row<LightModel>, 3> kLights = {
    {{"1", LightModel::Framed}, {"2", LightModel::Plain}, {"v30", LightModel::V30}}};
constexpr std::array<Row<Look>, 3> kLooks = {
    {{"light", Look::Light}, {"dark", Look::Dark}, {"large", Look::Large}}};

template <typename Rows>
auto valueNamed(const Rows& rows, std::string_view strName) -> std::optional<decltype(rows[0].value)> {
    for (const auto& row : rows)
        if (row.strName == strName)
            return row.value;
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
        if (strOption == "--headless") {
            options.bHeadless = true;
            continue;
        }
        if (strOption != "--script" && strOption != "--light" && strOption != "--pictures" &&
            strOption != "--look")
            return OptionsError{"unknown option " + std::string(strOption)};
        if (n + 1 == nArguments)
            return OptionsError{"option " + std::string(strOption) + " needs a value"};
        const std::string strValue = arguments[++n];
        if (strOption == "--script") {
            options.strScriptFile = strValue;
            options.bHeadless = true;
        } else if (strOption == "--pictures") {
            options.strPictures = strValue;
        } else if (strOption == "--look") {
            const auto look = valueNamed(kLooks, strValue);
            if (!look)
                return OptionsError{"option --look takes light, dark or large, not " + strValue};
            options.look = *look;
        } else {
            const auto light = valueNamed(kLights, strValue);
            if (!light)
                return OptionsError{"option --light takes 1, 2 or v30, not " + strValue};
            options.light = *light;
        }
    }
    return options;
}

std::string_view helpText() {
    return "Usage: vellux-simulator [--light 1|2|v30]\n"
           "       vellux-simulator --headless [--script FILE] [--light 1|2|v30]\n"
           "       vellux-simulator --pictures DIRECTORY [--look light|dark|large]\n"
           "\n"
           "Shows the program's real window, with a presence server of its own on this machine and a "
           "virtual\n"
           "light, and a panel to play the world; or plays a working day through it without a window. "
           "Prints\n"
           "one line for each effect.\n"
           "\n"
           "  --headless       without a window: plays a day\n"
           "  --script FILE    plays the day that FILE describes (docs/simulator.md), without a window\n"
           "  --light KIND     the light: 1 framed codes, 2 plain codes, v30 levels (v30 if not given)\n"
           "  --pictures DIR   takes pictures of the window in several states\n"
           "  --look LOOK      how it looks in them: light, dark, or large at 200 %\n"
           "  --help           prints this text\n"
           "\n"
           "Exit status: 0 when all went well, 1 when it did not, 2 when the command line or the script "
           "can't\n"
           "be understood.\n";
}

} // namespace vellux::simulator
