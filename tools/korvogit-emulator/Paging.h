#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Message.h"

namespace emulator {

/// Which part of a list a request asks for, and where its neighbours are.
struct Page {
    std::size_t number = 1;
    std::size_t size = 30;
    std::size_t total = 0;  ///< elements in the whole list

    std::size_t count() const { return total == 0 ? 1 : (total + size - 1) / size; }
    std::size_t first() const { return std::min((number - 1) * size, total); }
    std::size_t last() const { return std::min(first() + size, total); }
};

/// A query item's number, if it is one above zero.
std::optional<std::size_t> positiveNumber(const Request& request, std::string_view name);

/// Reads "page" and the page's size, which services name differently. What is no number above zero
/// counts as absent; a size above `maximal` is cut to it.
Page readPage(const Request& request, std::size_t total, std::size_t usual, std::size_t maximal,
              std::string_view sizeName = "per_page");

/// The query as it was written, with another "page" in its place or at its end.
std::string queryWithPage(std::string_view query, std::size_t number);

/// The value of a "Link" header (RFC 8288) with the relations prev, next, last, first in that
/// order, as far as they are: none of the four on the only page. `base` is the address without
/// query; the request's other query items are kept as they were written and only "page" is put in
/// place. `counted` off: no "last".
std::string linkHeader(const std::string& base, const Request& request, const Page& page,
                       bool counted = true);

}  // namespace emulator
