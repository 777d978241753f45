#include "Paging.h"

#include <charconv>

namespace emulator {

std::optional<std::size_t> positiveNumber(const Request& request, std::string_view name) {
    const auto text = request.queryValue(name).value_or("");
    std::size_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber && value > 0 ? std::optional(value) : std::nullopt;
}

std::string queryWithPage(std::string_view query, std::size_t number) {
    const std::string item = "page=" + std::to_string(number);
    std::string result;
    bool placed = false;
    while (!query.empty()) {
        const auto piece = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(query.size(), piece.size() + 1));
        const bool isPage = piece == "page" || piece.starts_with("page=");
        if (piece.empty() || (isPage && placed)) {
            continue;
        }
        result += result.empty() ? "" : "&";
        result += isPage ? std::string_view(item) : piece;
        placed = placed || isPage;
    }
    return placed ? result : result + (result.empty() ? "" : "&") + item;
}

Page readPage(const Request& request, std::size_t total, std::size_t usual, std::size_t maximal,
              std::string_view sizeName) {
    constexpr std::size_t farthest = 1'000'000'000;
    Page page;
    page.number = std::min(positiveNumber(request, "page").value_or(1), farthest);
    page.size = std::min(positiveNumber(request, sizeName).value_or(usual), maximal);
    page.total = total;
    return page;
}

std::string linkHeader(const std::string& base, const Request& request, const Page& page,
                       bool counted) {
    std::string value;
    const auto add = [&](std::string_view relation, std::size_t number) {
        value += value.empty() ? "" : ", ";
        value += "<" + base + "?" + queryWithPage(request.query, number) + ">; rel=\"";
        value.append(relation).append("\"");
    };
    if (page.number > 1) {
        add("prev", std::min(page.number - 1, page.count()));
    }
    if (page.number < page.count()) {
        add("next", page.number + 1);
        if (counted) {
            add("last", page.count());
        }
    }
    if (page.number > 1) {
        add("first", 1);
    }
    return value;
}

}  // namespace emulator
