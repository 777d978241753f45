#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Configuration.h"

namespace emulator {

/// A JSON object of a configuration file. Remembers where it stands and which members were asked
/// for, so that every mistake is told with its place. All throw ConfigurationError.
class JSONReader {
public:
    /// `value` must outlive the reader.
    JSONReader(const nlohmann::json& value, std::string place);

    std::string text(const char* member) const;
    std::optional<std::string> optionalText(const char* member) const;
    std::vector<std::string> texts(const char* member, std::vector<std::string> otherwise) const;
    bool flag(const char* member, bool otherwise) const;
    std::int64_t number(const char* member, std::int64_t otherwise, std::int64_t atMost,
                        std::int64_t atLeast = 0) const;
    bool has(const char* member) const;
    bool isList(const char* member) const;
    /// The member's elements, each an object; none without the member.
    std::vector<JSONReader> elements(const char* member) const;
    /// Fails when there is a member that nobody asked for.
    void requireNoOthers() const;

    /// Runs it; a ConfigurationError that has no place yet gets this one.
    template <typename Work>
    void check(Work work) const {
        named(place_, work);
    }
    template <typename Work>
    void at(const char* member, Work work) const {
        named(placeOf(member), work);
    }

private:
    struct Placed : ConfigurationError {
        using ConfigurationError::ConfigurationError;
    };
    template <typename Work>
    static void named(const std::string& place, Work work) {
        try {
            work();
        } catch (const Placed&) {
            throw;
        } catch (const ConfigurationError& error) {
            throw Placed(place + ": " + error.what());
        }
    }
    std::string placeOf(const std::string& member) const;
    [[noreturn]] void fail(const std::string& member, const std::string& problem) const;
    const nlohmann::json* find(const char* member) const;

    const nlohmann::json* value_;
    std::string place_;  ///< empty at the top
    mutable std::set<std::string> asked_;
};

/// Reads one of "accounts".
Account readAccount(const JSONReader& given);

}  // namespace emulator
