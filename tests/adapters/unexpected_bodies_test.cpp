// Successes whose bodies are not what was asked for, at every adapter.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <span>

#include "tests/helpers/EveryAdapter.h"

namespace {

using emulator::jsonAnswer;
using nlohmann::json;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

class UnexpectedBodies : public EveryAdapter {
protected:
    /// A success without a body: the parser's error at GitLab; a dictionary without anything at the
    /// others.
    void expectEmptySuccess(unsigned status) {
        const auto outcome = outcomeOf({.status = status, .headers = {}});
        if (GetParam().looksAtTheStatusFirst) return expectParsersError(outcome);
        EXPECT_EQ(outcome.validation, std::nullopt);
        EXPECT_EQ(outcome.listing->error(), std::nullopt);
        if (GetParam().listsAnArray) {
            EXPECT_EQ(outcome.listing->results(), std::nullopt);
        } else {
            EXPECT_THAT(outcome.listing->results(), Optional(IsEmpty()));
        }
    }
};

TEST_P(UnexpectedBodies, MayBeMissingWithNoContent) {
    expectEmptySuccess(204);
}

TEST_P(UnexpectedBodies, MayBeMissingWithASuccess) {
    expectEmptySuccess(200);
}

TEST_P(UnexpectedBodies, OfBlanksAreNoJSON) {
    expectParsersError(outcomeOf(jsonAnswer(200, " \r\n")));
}

TEST_P(UnexpectedBodies, OfTheOtherTopLevelGiveNeitherErrorNorResults) {
    const char* body = GetParam().listsAnArray ? R"({"values": [{"id": 1}]})" : R"([{"id": 1}])";
    const auto outcome = outcomeOf(jsonAnswer(200, body));
    EXPECT_EQ(outcome.validation, std::nullopt);
    EXPECT_EQ(outcome.listing->error(), std::nullopt);
    EXPECT_EQ(outcome.listing->results(), std::nullopt);
    EXPECT_EQ(outcome.listing->page(), std::nullopt);
    EXPECT_EQ(outcome.listing->totalNumberOfPages(), std::nullopt);
}

TEST_P(UnexpectedBodies, OfAScalarAreNoJSONDocument) {
    for (const char* body : {"1", "null", "true", "\"text\""}) {
        SCOPED_TRACE(body);
        expectParsersError(outcomeOf(jsonAnswer(200, body)));
    }
}

TEST_P(UnexpectedBodies, ThatEndInTheMiddleAreNoJSON) {
    expectParsersError(outcomeOf(jsonAnswer(200, R"([{"id": 1}, {"id")")));
}

TEST_P(UnexpectedBodies, SkipElementsOfTheWrongShape) {
    const auto result = listed(page(R"(1, "x", null, true, [], [{"name": "inner"}],
                                       {"name": "first"}, {}, {"name": "last"}, 2.5)"));
    EXPECT_EQ(result->error(), std::nullopt);
    const auto repositories = resultsOf(*result);
    ASSERT_THAT(repositories, SizeIs(3));
    EXPECT_THAT(repositories[0]->name(), Optional(std::string("first")));
    EXPECT_EQ(repositories[1]->name(), std::nullopt);
    EXPECT_THAT(repositories[2]->name(), Optional(std::string("last")));
}

TEST_P(UnexpectedBodies, MayHaveNoElements) {
    const auto result = listed(page(""));
    EXPECT_EQ(result->error(), std::nullopt);
    EXPECT_THAT(result->results(), Optional(IsEmpty()));
}

INSTANTIATE_TEST_SUITE_P(, UnexpectedBodies, testing::ValuesIn(adaptersUnderTest), adapterName);

/// A value that an adapter reads: where it stands in an element, and one of the right type that
/// makes a difference.
struct Field {
    const char* place;
    json rightValue;
};

const json cloneEntries = R"([{"name": "https", "href": "https://h/r.git"}])"_json;

std::vector<Field> fieldsOf(std::string_view serviceType) {
    if (serviceType.starts_with("GitHub")) {
        return {{"/id", 1},
                {"/name", "n"},
                {"/full_name", "n"},
                {"/description", "d"},
                {"/owner", {{"id", 1}}},
                {"/owner/id", 1},
                {"/owner/login", "l"},
                {"/archived", true},
                {"/visibility", "public"},
                {"/fork", false},
                {"/forks_count", 1},
                {"/stargazers_count", 1},
                {"/html_url", "https://h/r"},
                {"/ssh_url", "git@h:r.git"},
                {"/clone_url", "https://h/r.git"},
                {"/default_branch", "main"}};
    }
    if (serviceType.starts_with("GitLab")) {
        return {{"/id", 1},
                {"/name", "n"},
                {"/name_with_namespace", "o / n"},
                {"/description", "d"},
                {"/path", "n"},
                {"/path_with_namespace", "o/n"},
                {"/namespace", {{"id", 1}}},
                {"/namespace/id", 1},
                {"/namespace/name", "o"},
                {"/archived", true},
                {"/visibility", "internal"},
                {"/forks_count", 0},
                {"/star_count", 0},
                {"/web_url", "https://h/r"},
                {"/ssh_url_to_repo", "git@h:r.git"},
                {"/http_url_to_repo", "https://h/r.git"},
                {"/default_branch", "main"}};
    }
    if (serviceType == "Bitbucket") {
        return {{"/uuid", "{1}"},
                {"/name", "n"},
                {"/full_name", "o/n"},
                {"/description", "d"},
                {"/owner", {{"account_id", "1"}}},
                {"/owner/account_id", "1"},
                {"/owner/display_name", "o"},
                {"/is_private", true},
                {"/links", {{"clone", cloneEntries}}},
                {"/links/html", "https://h/r"},
                {"/links/clone", cloneEntries},
                {"/mainbranch", {{"name", "main"}}},
                {"/mainbranch/name", "main"}};
    }
    return {{"/id", 1},
            {"/name", "n"},
            {"/full_name", "n"},
            {"/description", "d"},
            {"/public", true},
            {"/links", {{"clone", cloneEntries}}},
            {"/links/clone", cloneEntries}};
}

json withValue(const Field& field, const json& value) {
    json element = json::object();
    element[json::json_pointer(field.place)] = value;
    return element;
}

/// A value of every type.
std::vector<json> valuesOfAllTypes() {
    return {nullptr, true, 1, 1.5, "text", json::array(), json::object()};
}

bool isOfOneType(const json& left, const json& right) {
    const auto isNumber = [](const json& value) { return value.is_number() || value.is_boolean(); };
    return left.type() == right.type() || (isNumber(left) && isNumber(right));
}

class MistypedFields : public EveryAdapter {
protected:
    /// The records of these elements, each by its properties.
    std::vector<json> recordsOf(const std::vector<json>& elements) {
        std::string text;
        for (const auto& element : elements) text += (text.empty() ? "" : ",") + element.dump();
        std::vector<json> records;
        for (const auto& repository : resultsOf(*listed(page(text)))) {
            records.push_back(propertiesOf(*repository));
        }
        return records;
    }
};

TEST_P(MistypedFields, AreLeftUnset) {
    std::vector<json> elements = {json::object()};
    for (const auto& field : fieldsOf(GetParam().serviceType)) {
        for (const auto& value : valuesOfAllTypes()) {
            if (!isOfOneType(value, field.rightValue)) elements.push_back(withValue(field, value));
        }
    }
    const auto records = recordsOf(elements);
    ASSERT_EQ(records.size(), elements.size());
    for (std::size_t index = 1; index < elements.size(); ++index) {
        EXPECT_EQ(records[index], records[0]) << elements[index];
    }
}

TEST_P(MistypedFields, AreSetWhenTheirTypeIsRight) {
    std::vector<json> elements = {json::object()};
    for (const auto& field : fieldsOf(GetParam().serviceType)) {
        elements.push_back(withValue(field, field.rightValue));
    }
    const auto records = recordsOf(elements);
    ASSERT_EQ(records.size(), elements.size());
    for (std::size_t index = 1; index < elements.size(); ++index) {
        EXPECT_NE(records[index], records[0]) << elements[index];
    }
}

INSTANTIATE_TEST_SUITE_P(, MistypedFields, testing::ValuesIn(adaptersUnderTest), adapterName);

}  // namespace
