// What is said and done before the toolkit starts.

#include "CommandLine.h"
#include "support/Text.h"

#include <gtest/gtest.h>

namespace {

using namespace vellux;
using Task = CommandLine::Task;

// An option of ours that the toolkit gets, or one of the toolkit's that it does not; a task that is
// forgotten.
TEST(CommandLine, TakesWhatIsOursAndLeavesTheRestInOrder) {
    const struct {
        const char *strGiven, *strLeft;
        CommandLine expected;
    } rows[] = {
        {"vellux", "vellux", {}},
        {"vellux --hidden", "vellux", {Task::Run, true}},
        {"vellux --help", "vellux", {Task::Help, false}},
        {"vellux --style a --hidden -x --hidden b", "vellux --style a -x b", {Task::Run, true}},
        {"vellux --status --help --hidden", "vellux", {Task::Status, true}},
        {"vellux --Help -help --help=1 --hid  help", "vellux --Help -help --help=1 --hid  help", {}},
        {"vellux --version -- --help --hidden", "vellux -- --help --hidden", {Task::Version, false}},
        {"--help", "--help", {}}, // the program's name
        {"", "", {}},
    };
    for (const auto& row : rows) {
        std::vector<std::string> given = split(row.strGiven, " ");
        std::vector<char*> arguments;
        for (std::string& strArgument : given)
            arguments.push_back(strArgument.data());
        arguments.push_back(nullptr);
        auto nArguments = static_cast<int>(given.size());
        EXPECT_EQ(takeCommandLine(nArguments, arguments.data()), row.expected) << row.strGiven;
        EXPECT_EQ(std::vector<std::string>(arguments.data(), arguments.data() + nArguments),
                  split(row.strLeft, " "));
        EXPECT_EQ(arguments[static_cast<std::size_t>(nArguments)], nullptr) << row.strGiven;
    }
    int nNone = 0;
    char* none[] = {nullptr};
    EXPECT_EQ(takeCommandLine(nNone, none), CommandLine());
    EXPECT_EQ(nNone, 0);
}

} // namespace
