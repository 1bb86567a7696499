// The simulator's command line.
#pragma once

#include "light/ReportDecoder.h"
#include "window/Look.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace vellux::simulator {

struct Options {
    LightModel light = LightModel::V30;
    bool bHeadless = false;
    std::optional<std::string> strScriptFile; ///< the default day when absent
    std::optional<std::string>
        strPictures; ///< directory for pictures of the window; none are taken when absent
    Look look = Look::Native;
    bool bHelp = false;
};

/// What is wrong with the command line.
struct OptionsError {
    std::string strText;
};

/// Reads the command line as main() gets it.
std::variant<Options, OptionsError> readOptions(int nArguments, const char* const* arguments);

/// What --help prints.
std::string_view helpText();

} // namespace vellux::simulator
