// The program's own command line: what is said and done before the toolkit starts.
#pragma once

#include <string>

namespace vellux {

/// What the arguments ask for.
struct CommandLine {
    enum class Task {
        Run,     ///< be the program, or show the running one
        Help,    ///< print helpText()
        Version, ///< print the version
        Status,  ///< print what the running copy shows
    };
    Task task = Task::Run;
    bool bHidden = false; ///< Run without showing the window

    bool operator==(const CommandLine&) const = default;
};

/// Takes "--help", "--version", "--status" and "--hidden" out of the arguments; the others, which are the
/// toolkit's, keep their order, and `nArguments` is how many are left. The first argument is the program.
/// What stands behind "--" is left alone. Of several tasks the first counts.
CommandLine takeCommandLine(int& nArguments, char** arguments);

/// What "--help" prints: lines, the last one ended, too.
std::string helpText();

/// Exit status of "--status" when no copy runs, or none answers.
inline constexpr int kNoneRuns = 3;

} // namespace vellux
