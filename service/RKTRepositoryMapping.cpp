#include "KorvoGitService/RKTRepositoryMapping.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "KorvoGitService/KorvoGit.h"
#include "support/JSONReading.h"
#include "support/URLText.h"

namespace {

/// Enough bytes for all but a few records.
constexpr std::size_t usualSizeOfTexts = 1024;
/// What most services put on a page at most.
constexpr std::size_t usualCount = 100;

}  // namespace

/// The lines of one dictionary: the element, or a dictionary in it.
class RKTRepositoryMapping::Table {
public:
    explicit Table(std::span<const RKTRepositoryField> fields);

    /// `dictionary` is null when the element has none there.
    void apply(RKTServiceRepository& repository, const RKTJSONDictionary* dictionary) const;

private:
    struct Line {
        RKTRepositoryField::Apply function = nullptr;  // null when `table` is set
        std::unique_ptr<const Table> table;

        void apply(RKTServiceRepository& repository, const RKTJSONValue* value) const;
    };

    /// One run through the table for one dictionary.
    struct Run {
        const Table& table;
        RKTServiceRepository& repository;
        std::uint64_t missing;  // a bit for each line

        /// False when no line is missing any more.
        bool take(std::uint8_t line, const RKTJSONValue& value);
    };

    void add(std::string_view key, Line line);

    std::vector<Line> lines_;
    rkt::KeyTable keys_;  // numbered as the lines
};

RKTRepositoryMapping::Table::Table(std::span<const RKTRepositoryField> fields) {
    std::vector<std::pair<std::string_view, std::vector<RKTRepositoryField>>> dictionaries;
    for (const auto& field : fields) {
        if (field.subkey.empty()) {
            add(field.key, {field.apply, nullptr});
            continue;
        }
        auto found =
            std::ranges::find(dictionaries, field.key, [](auto& pair) { return pair.first; });
        if (found == dictionaries.end()) found = dictionaries.insert(found, {field.key, {}});
        found->second.emplace_back(field.subkey, field.apply);
    }
    for (const auto& [key, subfields] : dictionaries) {
        add(key, {nullptr, std::make_unique<const Table>(subfields)});
    }
}

void RKTRepositoryMapping::Table::add(std::string_view key, Line line) {
    keys_.add(key);
    lines_.push_back(std::move(line));
}

void RKTRepositoryMapping::Table::Line::apply(RKTServiceRepository& repository,
                                              const RKTJSONValue* value) const {
    if (!table) return function(repository, value);
    const auto dictionary = value ? value->dictionary() : std::nullopt;
    table->apply(repository, dictionary ? &*dictionary : nullptr);
}

bool RKTRepositoryMapping::Table::Run::take(std::uint8_t line, const RKTJSONValue& value) {
    const std::uint64_t bit = std::uint64_t{1} << line;
    if ((missing & bit) != 0) {
        missing &= ~bit;
        table.lines_[line].apply(repository, &value);
    }
    return missing != 0;
}

void RKTRepositoryMapping::Table::apply(RKTServiceRepository& repository,
                                        const RKTJSONDictionary* dictionary) const {
    Run run{*this, repository, ~std::uint64_t{0} >> (maximumFieldCount - lines_.size())};
    if (dictionary) {
        const auto take = [](void* context, std::uint8_t line, const RKTJSONValue& value) {
            return static_cast<Run*>(context)->take(line, value);
        };
        rkt::visitMembers(*dictionary, keys_, take, &run);
    }
    for (auto missing = run.missing; missing != 0; missing &= missing - 1) {
        lines_[static_cast<std::size_t>(std::countr_zero(missing))].apply(repository, nullptr);
    }
}

RKTRepositoryMapping::RKTRepositoryMapping(std::span<const RKTRepositoryField> fields)
    : table_(std::make_unique<const Table>(fields)) {}

RKTRepositoryMapping::~RKTRepositoryMapping() = default;

/// The records of a page, which come together and mostly go together. Two allocations for each of
/// them, and what their release leaves behind in the allocator, would be two to four percent of all
/// that is done for a page.
struct RKTRepositoryMapping::Page {
    explicit Page(std::size_t count) : records(count) {}

    std::vector<char> texts;
    std::vector<RKTServiceRepository> records;
};

void RKTRepositoryMapping::fill(Page& page, std::span<const RKTJSONDictionary> elements) const {
    RKTPackedTexts room(usualSizeOfTexts);
    std::string texts;
    texts.reserve(usualSizeOfTexts * std::min(usualCount, elements.size()));
    auto element = elements.begin();
    for (auto& record : page.records) {
        record.isShared_ = false;
        record.texts_.swap(room);
        table_->apply(record, &*element++);
        record.texts_.moveTo(texts, room);
    }
    page.texts.assign(texts.begin(), texts.end());  // not a byte more
    const char* place = page.texts.data();
    for (auto& record : page.records) {
        place = record.texts_.standAt(place);
        record.isShared_ = true;
    }
}

RKTServiceArrayResult::Results RKTRepositoryMapping::repositories(
    std::span<const RKTJSONDictionary> elements) const {
    const auto page = std::make_shared<Page>(elements.size());
    fill(*page, elements);
    RKTServiceArrayResult::Results repositories;
    repositories.reserve(elements.size());
    for (auto& record : page->records) repositories.emplace_back(page, &record);
    return repositories;
}

std::shared_ptr<RKTServiceRepository> RKTRepositoryMapping::repositoryWithDictionary(
    const RKTJSONDictionary& element) const {
    return repositories({&element, 1}).front();
}

RKTServiceArrayResult::Results RKTRepositoryMapping::repositoriesWithArray(
    const RKTJSONArray& elements) const {
    std::vector<RKTJSONDictionary> dictionaries;
    for (const auto& element : elements) {
        if (const auto dictionary = element.dictionary()) dictionaries.push_back(*dictionary);
    }
    return repositories(dictionaries);
}

namespace RKTRepositoryFields {

std::optional<RKTURLView> plainURL(std::optional<std::string_view> text, std::string& room) {
    return text ? RKTURLAccess::viewOfText(*text, room) : std::nullopt;
}

std::optional<RKTURL> cloneURL(std::optional<std::string_view> text) {
    return text ? rkt_URLWithString(*text) : std::nullopt;
}

std::optional<std::string_view> closedWhenTrue(std::optional<RKTNumber> archived) {
    const bool closed = archived && archived->boolValue();
    return closed ? RKTServiceRepositoryStateClosed : RKTServiceRepositoryStateOpen;
}

std::optional<std::string_view> knownVisibility(std::optional<std::string_view> visibility) {
    for (const auto* known :
         {RKTServiceRepositoryVisibilityPublic, RKTServiceRepositoryVisibilityInternal}) {
        if (visibility == known) return known;
    }
    return RKTServiceRepositoryVisibilityPrivate;
}

}  // namespace RKTRepositoryFields
