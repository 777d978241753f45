#include "KorvoGitService/RKTServiceRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::Key;
using testing::Optional;

RKTHTTPURLResponse response(std::vector<RKTHTTPURLResponse::Header> headers, int status = 200) {
    return RKTHTTPURLResponse(std::nullopt, status, std::move(headers));
}

TEST(RKTServiceRequest, NumbersSortKeysAndDirections) {
    EXPECT_EQ(RKTServiceSortKeyDefault, 0U);
    EXPECT_EQ(RKTServiceSortKeyIdentifier, 1U);
    EXPECT_EQ(RKTServiceSortKeyName, 2U);
    EXPECT_EQ(RKTServiceSortKeyCreated, 3U);
    EXPECT_EQ(RKTServiceSortKeyUpdated, 4U);
    EXPECT_EQ(RKTServiceSortKeyLastActivity, 5U);
    EXPECT_EQ(RKTServiceSortDirectionDefault, 0U);
    EXPECT_EQ(RKTServiceSortDirectionAscending, 1U);
    EXPECT_EQ(RKTServiceSortDirectionDescending, 2U);
}

TEST(RKTRepositoriesRequest, AsksForNothingInParticularAtFirst) {
    const RKTRepositoriesRequest request;
    EXPECT_EQ(request.sortKey(), RKTServiceSortKeyDefault);
    EXPECT_EQ(request.sortDirection(), RKTServiceSortDirectionDefault);
    EXPECT_EQ(request.page(), std::nullopt);
    EXPECT_EQ(request.countPerPage(), std::nullopt);
    EXPECT_EQ(request.state(), std::nullopt);
    EXPECT_EQ(request.visibility(), std::nullopt);
}

TEST(RKTRepositoriesRequest, KeepsEachPropertyInItsOwnPlace) {
    RKTRepositoriesRequest request;
    request.setSortKey(RKTServiceSortKeyCreated);
    request.setSortDirection(RKTServiceSortDirectionDescending);
    request.setPage(4);
    request.setCountPerPage(50);
    request.setState("open");
    request.setVisibility("internal");
    EXPECT_EQ(request.sortKey(), RKTServiceSortKeyCreated);
    EXPECT_EQ(request.sortDirection(), RKTServiceSortDirectionDescending);
    EXPECT_THAT(request.page(), Optional(RKTNumber(4)));
    EXPECT_THAT(request.countPerPage(), Optional(RKTNumber(50)));
    EXPECT_THAT(request.state(), Optional(std::string("open")));
    EXPECT_THAT(request.visibility(), Optional(std::string("internal")));
}

TEST(RKTServiceRequest, KeepsValuesOfLaterVersions) {
    RKTServiceRequest request;
    request.setSortKey(static_cast<RKTServiceSortKey>(6));
    request.setSortDirection(static_cast<RKTServiceSortDirection>(UINT64_MAX));
    EXPECT_EQ(request.sortKey(), static_cast<RKTServiceSortKey>(6));
    EXPECT_EQ(request.sortDirection(), static_cast<RKTServiceSortDirection>(UINT64_MAX));
}

TEST(RKTServiceResult, NamesLinkRelations) {
    EXPECT_STREQ(RKTServiceLinkRelationFirst, "first");
    EXPECT_STREQ(RKTServiceLinkRelationPrevious, "prev");
    EXPECT_STREQ(RKTServiceLinkRelationNext, "next");
    EXPECT_STREQ(RKTServiceLinkRelationLast, "last");
}

TEST(RKTServiceResult, HasNoRelationsWithoutALinkHeader) {
    const auto withoutLinks = response({{"Content-Type", "application/json"}});
    EXPECT_EQ(RKTServiceResult::resultWithHTTPURLResponse(&withoutLinks)->linkRelations(),
              std::nullopt);
}

TEST(RKTServiceResult, HasNoRelationsWithoutAResponse) {
    EXPECT_EQ(RKTServiceResult::resultWithHTTPURLResponse(nullptr)->linkRelations(), std::nullopt);
}

TEST(RKTServiceResult, HasEmptyRelationsForAnEmptyLinkHeader) {
    for (const char* blank : {"", "   ", "\t"}) {
        const auto empty = response({{"Link", blank}});
        EXPECT_THAT(RKTServiceResult::resultWithHTTPURLResponse(&empty)->linkRelations(),
                    Optional(testing::IsEmpty()));
    }
}

TEST(RKTServiceResult, FindsTheLinkHeaderInAnyCase) {
    const auto lower = response({{"link", "<https://h/?page=2>; rel=\"next\""}});
    EXPECT_THAT(RKTServiceResult::resultWithHTTPURLResponse(&lower)->linkRelations(),
                Optional(ElementsAre(Key("next"))));
}

TEST(RKTServiceResult, ReadsSeveralLinkHeadersAsOne) {
    const auto two = response({{"Link", "<https://h/?page=2>; rel=\"next\""},
                               {"Link", "<https://h/?page=9>; rel=\"last\""}});
    EXPECT_THAT(RKTServiceResult::resultWithHTTPURLResponse(&two)->linkRelations(),
                Optional(ElementsAre(Key("last"), Key("next"))));
}

TEST(RKTServiceResult, DoesNotLookAtTheStatus) {
    const auto failure = response({{"Link", "<https://h/?page=2>; rel=\"next\""}}, 500);
    const auto result = RKTServiceResult::resultWithHTTPURLResponse(&failure);
    EXPECT_EQ(result->error(), std::nullopt);
    EXPECT_THAT(result->linkRelations(), Optional(ElementsAre(Key("next"))));
}

TEST(RKTServiceResult, IsOfTheClassThatWasAsked) {
    const std::shared_ptr<RKTServiceResult> object =
        RKTServiceObjectResult::resultWithHTTPURLResponse(nullptr);
    const std::shared_ptr<RKTServiceResult> array =
        RKTServiceArrayResult::resultWithHTTPURLResponse(nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<RKTServiceObjectResult>(object), nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<RKTServiceArrayResult>(array), nullptr);
}

TEST(RKTServiceResult, HasTheRelationsInEveryClass) {
    const auto linked = response({{"Link", "<https://h/?page=2>; rel=\"next\""}});
    EXPECT_THAT(RKTServiceObjectResult::resultWithHTTPURLResponse(&linked)->linkRelations(),
                Optional(ElementsAre(Key("next"))));
    EXPECT_THAT(RKTServiceArrayResult::resultWithHTTPURLResponse(&linked)->linkRelations(),
                Optional(ElementsAre(Key("next"))));
}

TEST(RKTServiceObjectResult, SharesItsResult) {
    const auto repository = std::make_shared<RKTServiceRepository>();
    RKTServiceObjectResult result;
    EXPECT_FALSE(result.result().has_value());
    result.setResult(repository);
    EXPECT_EQ(std::any_cast<std::shared_ptr<RKTServiceRepository>>(result.result()), repository);
}

TEST(RKTServiceObjectResult, MayBeReadWhileItsObjectIsCopied) {
    struct Object {
        const RKTServiceObjectResult* result;
        bool* read;
        Object(const RKTServiceObjectResult* owner, bool* flag) : result(owner), read(flag) {}
        Object(const Object& other) : result(other.result), read(other.read) {
            if (!*read) *read = result->error() == std::nullopt;
        }
    };
    RKTServiceObjectResult result;
    bool read = false;
    result.setResult(std::make_any<Object>(&result, &read));
    EXPECT_TRUE(result.result().has_value());
    EXPECT_TRUE(read);
}

TEST(RKTServiceArrayResult, HoldsAPage) {
    RKTServiceArrayResult result;
    EXPECT_EQ(result.results(), std::nullopt);
    EXPECT_EQ(result.page(), std::nullopt);
    EXPECT_EQ(result.totalNumberOfPages(), std::nullopt);
    const auto repository = std::make_shared<RKTServiceRepository>();
    result.setResults({{repository}});
    result.setPage(3);
    result.setTotalNumberOfPages(7);
    result.setError(RKTError("domain", 5));
    EXPECT_THAT(result.results(), Optional(ElementsAre(repository)));
    EXPECT_THAT(result.page(), Optional(RKTNumber(3)));
    EXPECT_THAT(result.totalNumberOfPages(), Optional(RKTNumber(7)));
    EXPECT_EQ(result.error()->code(), 5);
}

}  // namespace
