#include "KorvoGitService/RKTRepositoryMapping.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "KorvoGitService/KorvoGit.h"
#include "support/JSONReading.h"

/// The lines of one dictionary: the element, or a dictionary in it. A key is looked for among those
/// of its length, which are two or three at most in the tables of the services.
class RKTRepositoryMapping::Table {
public:
    explicit Table(std::span<const RKTRepositoryField> fields);

    /// `dictionary` is null when the element has none there.
    void apply(RKTServiceRepository& repository, const RKTJSONDictionary* dictionary) const;

private:
    struct Line {
        std::string_view key;
        RKTRepositoryField::Apply function = nullptr;  // null when `table` is set
        std::unique_ptr<const Table> table;

        void apply(RKTServiceRepository& repository, const RKTJSONValue* value) const;
    };

    /// One run through the table for one dictionary.
    struct Run {
        const Table& table;
        RKTServiceRepository& repository;
        std::uint64_t applied = 0;

        void applyOnce(const Line& line, const RKTJSONValue* value);
        void take(std::string_view key, const RKTJSONValue& value);
    };

    static std::vector<Line> linesOf(std::span<const RKTRepositoryField> fields);
    std::span<const Line> linesOfLength(std::size_t length) const;

    std::vector<Line> lines_;          // sorted by the lengths of their keys
    std::vector<std::size_t> starts_;  // for each length, where its lines start; and one more
    rkt::KeySieve sieve_;
};

RKTRepositoryMapping::Table::Table(std::span<const RKTRepositoryField> fields)
    : lines_(linesOf(fields)) {
    std::ranges::sort(lines_, {}, [](const Line& line) { return line.key.size(); });
    for (std::size_t index = 0; index < lines_.size(); ++index) {
        starts_.resize(std::max(starts_.size(), lines_[index].key.size() + 1), index);
        sieve_.add(lines_[index].key);
    }
    starts_.push_back(lines_.size());
}

std::vector<RKTRepositoryMapping::Table::Line> RKTRepositoryMapping::Table::linesOf(
    std::span<const RKTRepositoryField> fields) {
    std::vector<Line> lines;
    std::vector<std::pair<std::string_view, std::vector<RKTRepositoryField>>> dictionaries;
    for (const auto& field : fields) {
        if (field.subkey.empty()) {
            lines.push_back({field.key, field.apply, nullptr});
            continue;
        }
        auto found =
            std::ranges::find(dictionaries, field.key, [](auto& pair) { return pair.first; });
        if (found == dictionaries.end()) found = dictionaries.insert(found, {field.key, {}});
        found->second.emplace_back(field.subkey, field.apply);
    }
    for (const auto& [key, subfields] : dictionaries) {
        lines.push_back({key, nullptr, std::make_unique<const Table>(subfields)});
    }
    return lines;
}

std::span<const RKTRepositoryMapping::Table::Line> RKTRepositoryMapping::Table::linesOfLength(
    std::size_t length) const {
    if (length + 1 >= starts_.size()) return {};
    return std::span(lines_).subspan(starts_[length], starts_[length + 1] - starts_[length]);
}

void RKTRepositoryMapping::Table::Line::apply(RKTServiceRepository& repository,
                                              const RKTJSONValue* value) const {
    if (!table) return function(repository, value);
    const auto dictionary = value ? value->dictionary() : std::nullopt;
    table->apply(repository, dictionary ? &*dictionary : nullptr);
}

void RKTRepositoryMapping::Table::Run::applyOnce(const Line& line, const RKTJSONValue* value) {
    const std::uint64_t bit = std::uint64_t{1} << (&line - table.lines_.data());
    if ((applied & bit) == 0) line.apply(repository, value);
    applied |= bit;
}

void RKTRepositoryMapping::Table::Run::take(std::string_view key, const RKTJSONValue& value) {
    for (const Line& line : table.linesOfLength(key.size())) {
        if (line.key == key) applyOnce(line, &value);
    }
}

void RKTRepositoryMapping::Table::apply(RKTServiceRepository& repository,
                                        const RKTJSONDictionary* dictionary) const {
    Run run{*this, repository};
    if (dictionary) {
        const auto take = [](void* context, std::string_view key, const RKTJSONValue& value) {
            static_cast<Run*>(context)->take(key, value);
        };
        rkt::visitMembers(*dictionary, sieve_, take, &run);
    }
    for (const Line& line : lines_) run.applyOnce(line, nullptr);
}

RKTRepositoryMapping::RKTRepositoryMapping(std::span<const RKTRepositoryField> fields)
    : table_(std::make_unique<const Table>(fields)) {}

RKTRepositoryMapping::~RKTRepositoryMapping() = default;

std::shared_ptr<RKTServiceRepository> RKTRepositoryMapping::repositoryWithDictionary(
    const RKTJSONDictionary& element) const {
    auto repository = std::make_shared<RKTServiceRepository>();
    table_->apply(*repository, &element);
    return repository;
}

RKTServiceArrayResult::Results RKTRepositoryMapping::repositoriesWithArray(
    const RKTJSONArray& elements) const {
    RKTServiceArrayResult::Results repositories;
    repositories.reserve(elements.count());
    for (const auto& element : elements) {
        const auto dictionary = element.dictionary();
        if (dictionary) repositories.push_back(repositoryWithDictionary(*dictionary));
    }
    return repositories;
}

namespace RKTRepositoryFields {

std::optional<RKTURL> plainURL(std::optional<std::string_view> text) {
    return text ? RKTURL::URLWithString(*text) : std::nullopt;
}

std::optional<RKTURL> cloneURL(std::optional<std::string_view> text) {
    return text ? rkt_URLWithString(*text) : std::nullopt;
}

std::optional<std::string> closedWhenTrue(std::optional<RKTNumber> archived) {
    const bool closed = archived && archived->boolValue();
    return closed ? RKTServiceRepositoryStateClosed : RKTServiceRepositoryStateOpen;
}

std::optional<std::string> knownVisibility(std::optional<std::string_view> visibility) {
    for (const auto* known :
         {RKTServiceRepositoryVisibilityPublic, RKTServiceRepositoryVisibilityInternal}) {
        if (visibility == known) return known;
    }
    return RKTServiceRepositoryVisibilityPrivate;
}

}  // namespace RKTRepositoryFields
