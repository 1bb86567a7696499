// Reads the members of one JSON object and checks that none is missing, wrong or unknown.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace vellux::simulator {

/// Getters keep the first fault and return a default; error() returns it at the end.
class Members {
public:
    /// `object` must outlive this.
    explicit Members(const nlohmann::json& object);

    std::string text(const char* strName);
    std::optional<std::string> optionalText(const char* strName);
    std::optional<bool> optionalFlag(const char* strName);
    /// An integer from `nLowest` to `nHighest`.
    std::optional<std::int64_t> optionalNumber(const char* strName, std::int64_t nLowest,
                                               std::int64_t nHighest);
    std::int64_t number(const char* strName, std::int64_t nLowest, std::int64_t nHighest);
    /// A member of any kind; null when it is missing.
    const nlohmann::json* optionalValue(const char* strName);
    const nlohmann::json* value(const char* strName);

    /// Says what is wrong with a member, unless something was wrong before.
    void complain(const char* strName, const std::string& strWhat);

    /// What is wrong, members that nobody asked for included; absent when all is well. After all getters.
    std::optional<std::string> error();

private:
    const nlohmann::json& m_object;
    std::set<std::string> m_asked;
    std::optional<std::string> m_error;
};

} // namespace vellux::simulator
