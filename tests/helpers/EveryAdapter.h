// Every adapter in turn.

#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "tests/helpers/Adapters.h"

/// What tells the adapters apart when something goes wrong.
struct AdapterUnderTest {
    const char* serviceType;
    const char* credentialType;
    bool isSelfHosted;
    /// The status is looked at before the body is parsed.
    bool looksAtTheStatusFirst;
    /// A page is an array, otherwise a dictionary with the array under "values".
    bool listsAnArray;

    friend void PrintTo(const AdapterUnderTest& adapter, std::ostream* stream) {
        *stream << adapter.serviceType;
    }
};

constexpr AdapterUnderTest adaptersUnderTest[] = {
    {"GitHub", "Token", false, false, true},      {"GitHubEnterprise", "Token", true, false, true},
    {"GitLab", "Token", false, true, true},       {"GitLabSelfHosted", "Token", true, true, true},
    {"Bitbucket", "OAuth2", false, false, false}, {"BitbucketServer", "Token", true, false, false},
};

/// An account of the adapter with which the emulator's own answers succeed.
class EveryAdapter : public AdapterTest, public testing::WithParamInterface<AdapterUnderTest> {
protected:
    using AdapterTest::AdapterTest;
    std::shared_ptr<RKTServiceCredentials> credentials() const override;

    /// Of both network operations.
    struct Outcome {
        std::optional<RKTError> validation;
        std::shared_ptr<RKTServiceArrayResult> listing;
    };
    Outcome outcome();
    /// What they make of that answer.
    Outcome outcomeOf(const emulator::Answer& answer);
    /// What they make of the answers that are due, each spoilt.
    Outcome outcomeOf(const emulator::Fault& fault);

    /// Both failed with that error, and the listing has nothing but it.
    static void expectFailure(const Outcome& outcome, const std::string& domain, std::int64_t code);
    static void expectTransportError(const Outcome& outcome, RKTError::URLCode code);
    static void expectStatusError(const Outcome& outcome, std::int64_t code);
    static void expectParsersError(const Outcome& outcome);

    /// The answer of a page with these elements, as this service sends it.
    static emulator::Answer page(const std::string& elements);
};

inline std::string adapterName(const testing::TestParamInfo<AdapterUnderTest>& info) {
    return info.param.serviceType;
}
