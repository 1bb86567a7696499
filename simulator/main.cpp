// The simulator: the real program between a presence server of its own and a virtual light.

#include "HeadlessRun.h"
#include "Options.h"
#include "WindowedRun.h"
#include "day/DefaultDay.h"
#include "day/ScriptReader.h"
#include "support/Files.h"

#include <csignal>
#include <cstdio>
#include <string>

using namespace vellux::simulator;

namespace {

int playScript(const Options& options) {
    const auto& strFile = options.strScriptFile;
    const auto strText = strFile ? vellux::readTextFile(*strFile) : std::string(defaultDay());
    if (!strText)
        return complain(kNotUnderstood, *strFile + " can't be read");
    const auto script = readScript(*strText);
    if (const auto* const pError = std::get_if<ScriptError>(&script))
        return complain(kNotUnderstood, strFile.value_or("the default day") + ": " + pError->strText);
    return playDay(options.light, *std::get_if<Script>(&script));
}

} // namespace

int main(int nArguments, char** arguments) {
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes away must not end the day in the middle
    const auto result = readOptions(nArguments, arguments);
    if (const auto* const pError = std::get_if<OptionsError>(&result))
        return complain(kNotUnderstood, pError->strText + "; --help tells what there is");
    const Options& options = *std::get_if<Options>(&result);
    if (options.bHelp) {
        std::fputs(std::string(helpText()).c_str(), stdout);
        return kAsExpected;
    }
    if (options.bHeadless)
        return playScript(options);
    return showWindow(arguments[0], options);
}
