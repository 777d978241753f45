// Strings tables that a test makes for itself.

#ifndef KORVOGITSERVICE_TESTS_HELPERS_STRINGSTABLE_H
#define KORVOGITSERVICE_TESTS_HELPERS_STRINGSTABLE_H

#include <stdlib.h>

#include <clocale>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/helpers/TemporaryFolder.h"

namespace rkt::tests {

using Translations = std::map<std::string, std::string>;

/// A catalogue in gettext's binary form (GNU gettext manual, "The Format of GNU MO Files").
inline std::string compiledStringsTable(Translations texts) {
    texts[""] = "Content-Type: text/plain; charset=UTF-8\n";
    std::string header;
    std::string keys;
    std::string values;
    const auto put = [&header](std::size_t number) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            header.push_back(static_cast<char>((number >> shift) & 0xff));
        }
    };
    constexpr std::size_t headerSize = 28;
    const std::size_t tableSize = texts.size() * 8;
    for (const std::size_t word :
         {std::size_t{0x950412de}, std::size_t{0}, texts.size(), headerSize, headerSize + tableSize,
          std::size_t{0}, headerSize + 2 * tableSize}) {
        put(word);
    }
    for (const auto& [key, value] : texts) {
        put(key.size());
        put(headerSize + 2 * tableSize + keys.size());
        keys.append(key).push_back('\0');
    }
    for (const auto& [key, value] : texts) {
        put(value.size());
        put(headerSize + 2 * tableSize + keys.size() + values.size());
        values.append(value).push_back('\0');
    }
    return header + keys + values;
}

/// Writes `texts` where a bundle with that resource path looks for the table in the language.
inline void writeStringsTable(const std::filesystem::path& resourcePath,
                              const std::string& language, const std::string& table,
                              const Translations& texts) {
    const auto folder = resourcePath / language / "LC_MESSAGES";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / (table + ".mo"), std::ios::binary) << compiledStringsTable(texts);
}

/// Puts the process into a locale of that name for the object's life, with the C locale's rules in
/// UTF-8, so that no test depends on the locales that a system has. To be used before other threads
/// start.
class Locale {
public:
    explicit Locale(const std::string& name, int category = LC_ALL) {
        std::filesystem::create_directory_symlink("/usr/lib/locale/C.utf8", folder_.path() / name);
        setenv("LOCPATH", folder_.path().c_str(), 1);
        if (std::setlocale(category, name.c_str()) == nullptr) {
            throw std::runtime_error("no locale C.UTF-8 to rename");
        }
    }
    Locale(const Locale&) = delete;
    Locale& operator=(const Locale&) = delete;
    ~Locale() {
        unsetenv("LOCPATH");
        std::setlocale(LC_ALL, "C");
    }

private:
    TemporaryFolder folder_;
};

/// Sets the process's language for the object's life. To be used before other threads start.
class Language {
public:
    explicit Language(const std::string& language) {
        // The C library forgets what it looked up only when the locale changes, as it does next.
        setenv("LANGUAGE", language.c_str(), 1);
        locale_.emplace("en_US.UTF-8");
    }
    Language(const Language&) = delete;
    Language& operator=(const Language&) = delete;
    ~Language() { unsetenv("LANGUAGE"); }

private:
    std::optional<Locale> locale_;
};

}  // namespace rkt::tests

#endif
