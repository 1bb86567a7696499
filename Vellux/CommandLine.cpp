#include "CommandLine.h"

#include <string_view>

namespace vellux {

namespace {

using Task = CommandLine::Task;

constexpr struct {
    std::string_view strArgument;
    Task task;
    const char* strHelp;
} kOptions[] = {
    {"--hidden", Task::Run, "start without showing the window, unless there are no settings yet"},
    {"--status", Task::Status, "print one line about the running copy, and end"},
    {"--version", Task::Version, "print the version, and end"},
    {"--help", Task::Help, "print this text, and end"},
};

constexpr std::size_t kHelpColumn = 13; // where an option's text begins

bool take(std::string_view strArgument, CommandLine& commandLine) {
    for (const auto& option : kOptions) {
        if (strArgument != option.strArgument)
            continue;
        if (option.task == Task::Run)
            commandLine.bHidden = true;
        else if (commandLine.task == Task::Run)
            commandLine.task = option.task;
        return true;
    }
    return false;
}

} // namespace

CommandLine takeCommandLine(int& nArguments, char** arguments) {
    CommandLine commandLine;
    bool bOptions = true;
    int nKept = 1;
    for (int n = 1; n < nArguments; ++n) {
        bOptions = bOptions && arguments[n] != std::string_view("--");
        if (!bOptions || !take(arguments[n], commandLine))
            arguments[nKept++] = arguments[n];
    }
    if (nKept >= nArguments)
        return commandLine;
    nArguments = nKept;
    arguments[nKept] = nullptr;
    return commandLine;
}

std::string helpText() {
    std::string strText = "Usage: vellux [OPTION]...\n"
                          "Shows your Lync or Skype for Business presence on a USB light.\n\n";
    for (const auto& option : kOptions) {
        strText.append("  ").append(option.strArgument);
        strText.append(kHelpColumn - 2 - option.strArgument.size(), ' ').append(option.strHelp).append("\n");
    }
    return strText + "\nStarted again, it shows the window of the copy that runs. Other arguments are the\n"
                     "toolkit's, such as --platform or --style.\n\n"
                     "--status prints state, presence, call, lamp and light, separated by tabs; \"-\"\n"
                     "stands for a presence that is not known.\n\n"
                     "Exit status: 0, or 1 if it can't start, or 3 if --status finds no copy running, or\n"
                     "none that answers within two seconds.\n";
}

} // namespace vellux
