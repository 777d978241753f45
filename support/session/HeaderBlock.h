// An answer's header fields, in one text.

#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "KorvoGitService/RKTURLRequest.h"

namespace rkt {

/// Takes no memory for each field, so that the loader's thread only copies bytes; whoever takes the
/// answer takes it apart.
class HeaderBlock {
public:
    /// @param name  without a colon
    void add(std::string_view name, std::string_view value) {
        text_.append(name).append(1, ':').append(value).append(1, '\n');
    }
    /// Without effect while there is no field.
    void extendLastValue(std::string_view more) {
        if (text_.empty()) return;
        text_.back() = ' ';
        text_.append(more).append(1, '\n');
    }
    void reserve(std::size_t bytes) { text_.reserve(bytes); }
    void clear() { text_.clear(); }
    bool isEmpty() const { return text_.empty(); }

    /// @param visit  is called with each name and value
    template <class Visit>
    void visitAll(Visit visit) const {
        for (std::string_view rest = text_; !rest.empty();) {
            const auto line = rest.substr(0, rest.find('\n'));
            const auto colon = line.find(':');
            visit(line.substr(0, colon), line.substr(colon + 1));
            rest.remove_prefix(line.size() + 1);
        }
    }

    std::vector<RKTURLRequest::Header> fields() const {
        std::vector<RKTURLRequest::Header> fields;
        fields.reserve(static_cast<std::size_t>(std::ranges::count(text_, '\n')));
        visitAll([&](std::string_view name, std::string_view value) {
            fields.emplace_back(name, value);
        });
        return fields;
    }

private:
    std::string text_;  // "name:value\n" for each
};

}  // namespace rkt
