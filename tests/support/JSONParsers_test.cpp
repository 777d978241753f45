// Documents and the parsers that they hold while they live.

#include "support/JSONParsers.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "KorvoGitService/RKTJSON.h"

namespace {

RKTJSONDocument document(const std::string& text) {
    return RKTJSONSerialization::JSONObjectWithData(text).value();
}

std::string numbers(int from, int count) {
    std::string text = "[" + std::to_string(from);
    for (int i = 1; i < count; ++i) {
        text += "," + std::to_string(from + i);
    }
    return text + "]";
}

std::int64_t sum(const RKTJSONDocument& document) {
    std::int64_t total = 0;
    const auto array = document.root().array().value();
    for (const auto value : array) {
        total += value.number().value().integerValue();
    }
    return total;
}

TEST(JSONParsers, AreUsedAgain) {
    auto lease = rkt::leaseJSONParser();
    const auto* parser = lease.get();
    lease.reset();
    EXPECT_EQ(rkt::leaseJSONParser().get(), parser);
}

TEST(JSONParsers, AreUsedAgainOnAnotherThread) {
    auto lease = rkt::leaseJSONParser();
    const auto* parser = lease.get();
    std::thread([&lease] { lease.reset(); }).join();
    EXPECT_EQ(rkt::leaseJSONParser().get(), parser);
}

TEST(JSONParsers, AreNotSharedWhileLeased) {
    const auto one = rkt::leaseJSONParser();
    const auto other = rkt::leaseJSONParser();
    EXPECT_NE(one.get(), other.get());
}

TEST(JSONParsers, AreNotKeptWithLargeBuffers) {
    const std::string large = numbers(0, 1'000'000);
    {
        auto lease = rkt::leaseJSONParser();
        ASSERT_EQ(lease->parse(large).error(), simdjson::SUCCESS);
        ASSERT_GE(lease->capacity(), large.size());
    }
    const auto one = rkt::leaseJSONParser();
    const auto other = rkt::leaseJSONParser();
    EXPECT_LT(one->capacity(), large.size());
    EXPECT_LT(other->capacity(), large.size());
}

TEST(JSONParsers, AreNotKeptWithAnotherDepth) {
    const std::string deepest = std::string(512, '[') + "1" + std::string(512, ']');
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(RKTJSONSerialization::JSONObjectWithData(deepest));
        EXPECT_FALSE(RKTJSONSerialization::JSONObjectWithData("[" + deepest + "]"));
        EXPECT_EQ(rkt::leaseJSONParser()->max_depth(), rkt::jsonParserDepth);
    }
}

TEST(JSONParsers, LetDocumentsBeOpenAtOnce) {
    std::vector<RKTJSONDocument> documents;
    for (int i = 0; i < 10; ++i) {
        documents.push_back(document(numbers(i, 3)));
    }
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(sum(documents[static_cast<std::size_t>(i)]), 3 * i + 3);
    }
}

TEST(JSONParsers, LeaveNothingOfALongerTextBehind) {
    document("[11111111,\"" + std::string(1000, 'x') + "\"]");
    EXPECT_EQ(sum(document("[1]")), 1);
    EXPECT_FALSE(RKTJSONSerialization::JSONObjectWithData("[1"));
    EXPECT_EQ(sum(document("[2]")), 2);
}

TEST(JSONParsers, LetADocumentOutliveItsText) {
    auto text = std::string("[\"a text that is longer than a small string\"]");
    const auto parsed = document(text);
    text.assign(text.size(), '#');
    const auto value = *parsed.root().array().value().begin();
    EXPECT_EQ(value.string(), "a text that is longer than a small string");
}

TEST(JSONParsers, LetADocumentMoveWithoutItsValues) {
    auto one = document(numbers(1, 3));
    const auto root = one.root();
    const RKTJSONDocument other = std::move(one);
    EXPECT_EQ(root.array().value().count(), 3u);
    EXPECT_EQ(sum(other), 6);
}

TEST(JSONParsers, LetADocumentBeReplaced) {
    auto one = document(numbers(1, 3));
    one = document(numbers(10, 2));
    EXPECT_EQ(sum(one), 21);
}

TEST(JSONParsers, LetADocumentEndOnAnotherThread) {
    for (int i = 0; i < 20; ++i) {
        std::optional<RKTJSONDocument> moved = document(numbers(i, 100));
        std::thread other([&moved] {
            EXPECT_GT(sum(*moved), 0);
            moved.reset();
        });
        other.join();
        EXPECT_EQ(sum(document(numbers(1, 3))), 6);
    }
}

TEST(JSONParsers, WorkOnManyThreads) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([thread] {
            for (int round = 0; round < 50; ++round) {
                const auto outer = document(numbers(thread, 50));
                const auto inner = document("[18446744073709551616," + std::to_string(round) + "]");
                EXPECT_EQ(sum(outer), 50 * thread + 1225);
                EXPECT_EQ(inner.root().array()->count(), 2u);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

TEST(JSONParsers, LetADocumentBeReadOnManyThreads) {
    const auto shared = document(numbers(1, 1000));
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&shared] { EXPECT_EQ(sum(shared), 500'500); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

TEST(JSONParsers, LetADocumentOutliveTheThreadsOwnObjects) {
    std::int64_t seen = 0;
    struct Late {
        std::optional<RKTJSONDocument> kept;
        std::int64_t* total = nullptr;
        ~Late() {
            if (kept) {
                *total = sum(*kept);
                kept.reset();
                *total += sum(document("[100]"));
            }
        }
    };
    std::thread thread([&seen] {
        // Made before the thread's first parser, and so destroyed after its idle ones.
        thread_local Late late;
        late.total = &seen;
        late.kept = document(numbers(1, 3));
        document("[]");
    });
    thread.join();
    EXPECT_EQ(seen, 106);
}

}  // namespace
