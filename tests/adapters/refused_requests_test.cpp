// Answers that are no success, at every adapter.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "KorvoGitService/KorvoGitServiceErrors.h"
#include "tests/helpers/EveryAdapter.h"

namespace {

using emulator::jsonAnswer;
using emulator::textAnswer;
using testing::Optional;

class RefusedRequests : public EveryAdapter {
protected:
    /// A refusal with a message, told as that code and that description.
    void expectTold(unsigned status, std::int64_t code, const char* description) {
        const auto outcome =
            outcomeOf(jsonAnswer(status, R"({"message": "The reason.", "errors": []})"));
        expectStatusError(outcome, code);
        for (const auto& error : {outcome.validation, outcome.listing->error()}) {
            EXPECT_EQ(error->localizedDescription(), description);
            EXPECT_THAT(error->localizedRecoverySuggestion(), Optional(std::string("The reason.")));
        }
    }
    /// A refusal without JSON: GitLab's adapter tells the status, the others' the parser's error.
    void expectStatusOrParsersError(const emulator::Answer& answer) {
        const auto outcome = outcomeOf(answer);
        if (!GetParam().looksAtTheStatusFirst) return expectParsersError(outcome);
        expectStatusError(outcome, answer.status);
        EXPECT_EQ(outcome.validation->localizedRecoverySuggestion(), std::nullopt);
    }
};

TEST_P(RefusedRequests, AreToldWhenTheCredentialsAreWrong) {
    expectTold(401, RKTServiceErrorUnauthorized, "Unauthorized");
}

TEST_P(RefusedRequests, AreToldWhenTheyAreForbidden) {
    expectTold(403, 403, "Forbidden");
}

TEST_P(RefusedRequests, AreToldWhenNothingIsFound) {
    expectTold(404, 404, "Not Found");
}

TEST_P(RefusedRequests, AreToldWhenTheyCannotBeProcessed) {
    expectTold(422, 422, "Unprocessable Content");
}

TEST_P(RefusedRequests, AreToldWhenTheyAreTooMany) {
    expectTold(429, 429, "Too Many Requests");
}

TEST_P(RefusedRequests, AreToldWhenTheServiceFails) {
    expectTold(500, 500, "Internal Server Error");
}

TEST_P(RefusedRequests, AreToldForAllStatusesThatAreNoSuccess) {
    expectTold(300, 300, "Multiple Choices");
    expectTold(410, 410, "Gone");
    expectTold(599, 599, "Server Error");
}

TEST_P(RefusedRequests, MayBeTooManyInPlainText) {
    expectStatusOrParsersError(textAnswer(429, "Retry later\n"));
}

TEST_P(RefusedRequests, MayHaveAnErrorPageInHTML) {
    expectStatusOrParsersError(textAnswer(500, "<html><body>Internal error</body></html>"));
}

TEST_P(RefusedRequests, MayHaveABodyOfAScalar) {
    expectStatusOrParsersError(jsonAnswer(403, "\"message\""));
}

TEST_P(RefusedRequests, MayHaveNoBody) {
    for (const unsigned status : {304U, 404U}) {
        const auto outcome = outcomeOf({.status = status, .headers = {}});
        expectStatusError(outcome, status);
        EXPECT_EQ(outcome.validation->localizedRecoverySuggestion(), std::nullopt);
    }
}

TEST_P(RefusedRequests, HaveNoSuggestionWithoutAMessageText) {
    for (const char* body : {"{}", "[]", R"(["message"])", R"({"message": 5})",
                             R"({"message": null})", R"({"message": {"name": ["is taken"]}})",
                             R"({"error": {"message": "below the top level"}})"}) {
        const auto outcome = outcomeOf(jsonAnswer(403, body));
        expectStatusError(outcome, 403);
        EXPECT_EQ(outcome.validation->localizedRecoverySuggestion(), std::nullopt) << body;
    }
}

INSTANTIATE_TEST_SUITE_P(, RefusedRequests, testing::ValuesIn(adaptersUnderTest), adapterName);

}  // namespace
