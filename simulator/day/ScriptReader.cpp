#include "day/ScriptReader.h"

#include "day/Members.h"
#include "day/StepReader.h"

#include <utility>

namespace vellux::simulator {

namespace {

using Json = nlohmann::json;

std::optional<std::string> readSteps(const Json* pSteps, std::vector<NamedStep>& steps) {
    if (pSteps == nullptr || !pSteps->is_array())
        return "member \"steps\": must be a list of steps";
    for (std::size_t n = 0; n < pSteps->size(); ++n)
        if (const auto strError = readStep((*pSteps)[n], steps))
            return "step " + std::to_string(n + 1) + ": " + *strError;
    return std::nullopt;
}

std::optional<std::string> readAccount(const Json* pAccount, Script& script) {
    if (pAccount == nullptr)
        return std::nullopt;
    Members members(*pAccount);
    script.strUserName = members.text("user");
    script.strPassword = members.text("password");
    const auto strError = members.error();
    return strError ? std::optional("account: " + *strError) : std::nullopt;
}

std::optional<std::string> readExpectation(const Json* pExpect, Script& script) {
    if (pExpect == nullptr)
        return std::nullopt;
    Members members(*pExpect);
    script.strExpectedLight = members.text("light");
    const auto strError = members.error();
    return strError ? std::optional("expect: " + *strError) : std::nullopt;
}

std::optional<std::string> readWhole(const Json& root, Script& script) {
    Members members(root);
    const Json* const pAccount = members.optionalValue("account");
    const Json* const pSteps = members.optionalValue("steps");
    const Json* const pExpect = members.optionalValue("expect");
    if (auto strError = members.error())
        return strError;
    if (auto strError = readAccount(pAccount, script))
        return strError;
    if (auto strError = readSteps(pSteps, script.steps))
        return strError;
    return readExpectation(pExpect, script);
}

// Finds the place where a text ceases to be JSON; used only when it is known to be none.
class FaultFinder : public nlohmann::json_sax<Json> {
public:
    std::string strFault;

    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool start_object(std::size_t) override { return true; }
    bool key(string_t&) override { return true; }
    bool end_object() override { return true; }
    bool start_array(std::size_t) override { return true; }
    bool end_array() override { return true; }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& error) override {
        const std::string strText = error.what(); // "[exception's name] parse error at line ..."
        const std::size_t nBracket = strText.find("] ");
        strFault = nBracket == std::string::npos ? strText : strText.substr(nBracket + 2);
        return false;
    }
};

} // namespace

std::variant<Script, ScriptError> readScript(std::string_view strText) {
    constexpr bool kComments = true;
    const Json root = Json::parse(strText, nullptr, /*allow_exceptions=*/false, kComments);
    if (root.is_discarded()) {
        FaultFinder finder;
        Json::sax_parse(strText, &finder, Json::input_format_t::json, /*strict=*/true, kComments);
        return ScriptError{"not JSON: " + finder.strFault};
    }
    Script script;
    if (auto strError = readWhole(root, script))
        return ScriptError{std::move(*strError)};
    return script;
}

} // namespace vellux::simulator
