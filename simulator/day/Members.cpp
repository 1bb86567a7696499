#include "day/Members.h"

namespace vellux::simulator {

using Json = nlohmann::json;

Members::Members(const Json& object) : m_object(object) {
    if (!object.is_object())
        m_error = "not an object";
}

void Members::complain(const char* strName, const std::string& strWhat) {
    if (!m_error)
        m_error = "member \"" + std::string(strName) + "\": " + strWhat;
}

const Json* Members::optionalValue(const char* strName) {
    m_asked.insert(strName);
    if (!m_object.is_object())
        return nullptr;
    const auto found = m_object.find(strName);
    return found == m_object.end() ? nullptr : &*found;
}

const Json* Members::value(const char* strName) {
    const Json* const pValue = optionalValue(strName);
    if (pValue == nullptr)
        complain(strName, "missing");
    return pValue;
}

std::optional<std::string> Members::optionalText(const char* strName) {
    const Json* const pValue = optionalValue(strName);
    if (pValue == nullptr)
        return std::nullopt;
    if (!pValue->is_string()) {
        complain(strName, "must be a text");
        return std::nullopt;
    }
    return pValue->get_ref<const std::string&>();
}

std::string Members::text(const char* strName) {
    value(strName);
    return optionalText(strName).value_or("");
}

std::optional<bool> Members::optionalFlag(const char* strName) {
    const Json* const pValue = optionalValue(strName);
    if (pValue == nullptr)
        return std::nullopt;
    if (!pValue->is_boolean()) {
        complain(strName, "must be true or false");
        return std::nullopt;
    }
    return pValue->get<bool>();
}

std::optional<std::int64_t> Members::optionalNumber(const char* strName, std::int64_t nLowest,
                                                    std::int64_t nHighest) {
    const Json* const pValue = optionalValue(strName);
    if (pValue == nullptr)
        return std::nullopt;
    const bool bInRange = pValue->is_number_integer() &&
                          pValue->get<double>() >= static_cast<double>(nLowest) &&
                          pValue->get<double>() <= static_cast<double>(nHighest);
    if (!bInRange) {
        complain(strName,
                 "must be an integer from " + std::to_string(nLowest) + " to " + std::to_string(nHighest));
        return std::nullopt;
    }
    return pValue->get<std::int64_t>();
}

std::int64_t Members::number(const char* strName, std::int64_t nLowest, std::int64_t nHighest) {
    value(strName);
    return optionalNumber(strName, nLowest, nHighest).value_or(nLowest);
}

std::optional<std::string> Members::error() {
    if (m_error)
        return m_error;
    for (const auto& [strName, value] : m_object.items())
        if (!m_asked.contains(strName))
            return "unknown member \"" + strName + "\"";
    return std::nullopt;
}

} // namespace vellux::simulator
