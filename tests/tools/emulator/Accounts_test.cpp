#include "tools/korvogit-emulator/Accounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using emulator::Accounts;
using emulator::Repository;
using emulator::Visibility;

std::vector<Repository> generate(std::size_t count, std::uint64_t seed = 1) {
    return emulator::generateRepositories({"tester", 7, false}, count, seed);
}

TEST(EmulatorAccounts, AreTheSameEachTime) {
    const auto one = generate(50);
    const auto other = generate(50);
    for (std::size_t i = 0; i < one.size(); ++i) {
        EXPECT_EQ(one[i].id, other[i].id);
        EXPECT_EQ(one[i].fullName(), other[i].fullName());
        EXPECT_EQ(one[i].description, other[i].description);
        EXPECT_EQ(one[i].pushed, other[i].pushed);
    }
}

TEST(EmulatorAccounts, DifferBySeed) {
    EXPECT_NE(generate(1, 1).front().created, generate(1, 2).front().created);
}

TEST(EmulatorAccounts, NeverRepeatANameOrAnId) {
    std::set<std::string> names;
    std::set<std::int64_t> ids;
    const auto repositories = generate(5000);
    for (const auto& repository : repositories) {
        names.insert(repository.name);
        ids.insert(repository.id);
    }
    EXPECT_EQ(names.size(), 5000U);
    EXPECT_EQ(ids.size(), 5000U);
}

TEST(EmulatorAccounts, MixWhatRepositoriesCanBe) {
    const auto repositories = generate(137);
    const auto some = [&](auto&& is) {
        const auto count = std::ranges::count_if(repositories, is);
        return count > 0 && count < 137;
    };
    for (const auto visibility : {Visibility::Public, Visibility::Private, Visibility::Internal}) {
        EXPECT_TRUE(some([&](const auto& r) { return r.visibility == visibility; }));
    }
    EXPECT_TRUE(some(&Repository::isFork));
    EXPECT_TRUE(some(&Repository::isArchived));
    EXPECT_TRUE(some([](const auto& r) { return r.owner.isOrganization; }));
    EXPECT_TRUE(some([](const auto& r) { return r.description.has_value(); }));
    EXPECT_TRUE(some([](const auto& r) { return r.description == ""; }));
    EXPECT_TRUE(some([](const auto& r) {
        return r.description && std::ranges::any_of(*r.description, [](char c) { return c < 0; });
    }));
    EXPECT_TRUE(some([](const auto& r) { return r.homepage.has_value(); }));
    EXPECT_TRUE(some([](const auto& r) { return r.license.has_value(); }));
    EXPECT_TRUE(some([](const auto& r) { return r.defaultBranch == "main"; }));
}

TEST(EmulatorAccounts, KeepInternalToOrganizations) {
    for (const auto& repository : generate(500)) {
        if (repository.visibility == Visibility::Internal) {
            EXPECT_TRUE(repository.owner.isOrganization);
        }
    }
}

TEST(EmulatorAccounts, HaveTheDemoSizes) {
    const auto accounts = Accounts::demo();
    EXPECT_EQ(accounts.withLogin("octavia")->repositories.size(), 137U);
    EXPECT_EQ(accounts.withLogin("marlow")->repositories.size(), 3U);
    EXPECT_EQ(accounts.withLogin("archive")->repositories.size(), 4200U);
    EXPECT_EQ(accounts.withLogin("nobody"), nullptr);
}

TEST(EmulatorAccounts, AreFoundByToken) {
    const auto accounts = Accounts::demo();
    EXPECT_EQ(accounts.withToken("demo-token-marlow", 0).account->login, "marlow");
    EXPECT_EQ(accounts.withToken("fault-bad-gzip", 0).account->login, "octavia");
    EXPECT_FALSE(accounts.withToken("", 0));
    EXPECT_FALSE(accounts.withToken("demo-token", 0));
}

TEST(EmulatorAccounts, RefuseATokenFromItsLastSecondOn) {
    auto account = emulator::generateAccount("brief", "brief-token", 1);
    account.tokens.front().expires = 100;
    Accounts accounts;
    accounts.add(account);
    EXPECT_TRUE(accounts.withToken("brief-token", 99));
    EXPECT_FALSE(accounts.withToken("brief-token", 100));
}

}  // namespace
