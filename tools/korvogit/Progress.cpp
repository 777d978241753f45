#include "Progress.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "RepositoriesTable.h"
#include "Terminal.h"

namespace korvogit {

namespace {

std::string bar(std::int64_t pages, std::int64_t total) {
    constexpr std::int64_t width = 24;
    const auto filled =
        static_cast<std::size_t>(width * std::min(pages, total) / std::max<std::int64_t>(total, 1));
    const auto repeated = [](const char* piece, std::size_t times) {
        std::string text;
        while (times-- > 0) text += piece;
        return text;
    };
    const bool unicode = localeIsUnicode();
    return repeated(unicode ? "━" : "#", filled) +
           repeated(unicode ? "╌" : "-", static_cast<std::size_t>(width) - filled) + "  ";
}

}  // namespace

void Progress::show(const PageWalk& walk) {
    const std::int64_t total = walk.totalNumberOfPages();
    std::string text = total > 0 ? bar(walk.pages(), total) : "";
    text += "page " + std::to_string(walk.pages());
    if (total > 0) text += " of " + std::to_string(total);
    text += ", " + countLine(walk.repositories());
    spinner_.say(std::move(text));
}

}  // namespace korvogit
