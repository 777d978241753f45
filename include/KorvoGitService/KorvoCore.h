// Small operations on the platform's types that every adapter uses.

#ifndef KORVOGITSERVICE_KORVOCORE_H
#define KORVOGITSERVICE_KORVOCORE_H

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "KorvoGitService/RKTBundle.h"
#include "KorvoGitService/RKTExport.h"
#include "KorvoGitService/RKTJSON.h"
#include "KorvoGitService/RKTURL.h"

/// The text for `key` in the bundle's default table, or the key itself.
RKT_EXPORT std::string KCLocalizedString(std::string_view key, const RKTBundle& bundle);

/// The same with the table named; the argument order is key, bundle, table.
RKT_EXPORT std::string KCLocalizedStringFromTable(std::string_view key, const RKTBundle& bundle,
                                                  std::string_view table);

/// `kc_objectOfClass:forKey:`: the value under `key` when `dictionary` is a JSON dictionary and the
/// value is of type T, which is RKTNumber, std::string_view, RKTJSONArray or RKTJSONDictionary;
/// otherwise nothing. The service decides what it sends, so a wrong type is never an error.
template <class T>
std::optional<T> kc_objectOfClass(const RKTJSONValue& dictionary, std::string_view key);
template <class T>
std::optional<T> kc_objectOfClass(const RKTJSONDictionary& dictionary, std::string_view key);

/// The value itself when it is of type T.
template <class T>
std::optional<T> kc_valueOfClass(const RKTJSONValue& value);
template <>
inline std::optional<RKTNumber> kc_valueOfClass(const RKTJSONValue& value) {
    return value.number();
}
template <>
inline std::optional<std::string_view> kc_valueOfClass(const RKTJSONValue& value) {
    return value.string();
}
template <>
inline std::optional<RKTJSONArray> kc_valueOfClass(const RKTJSONValue& value) {
    return value.array();
}
template <>
inline std::optional<RKTJSONDictionary> kc_valueOfClass(const RKTJSONValue& value) {
    return value.dictionary();
}

template <class T>
std::optional<T> kc_objectOfClass(const RKTJSONDictionary& dictionary, std::string_view key) {
    const auto value = dictionary.objectForKey(key);
    return value ? kc_valueOfClass<T>(*value) : std::nullopt;
}

template <class T>
std::optional<T> kc_objectOfClass(const RKTJSONValue& dictionary, std::string_view key) {
    const auto members = dictionary.dictionary();
    return members ? kc_objectOfClass<T>(*members, key) : std::nullopt;
}

/// `kc_queryParameters`: the query's items folded in order into a dictionary: a later item of a
/// name wins, one without a value removes what stood there. Empty when the URL has no query or no
/// components.
RKT_EXPORT std::map<std::string, std::string, std::less<>> kc_queryParameters(const RKTURL& url);

#endif
