#include "tests/helpers/EveryAdapter.h"

#include "KorvoGitService/KorvoGitServiceErrors.h"

std::shared_ptr<RKTServiceCredentials> EveryAdapter::credentials() const {
    const auto& adapter = GetParam();
    const bool needsURL = std::string_view(adapter.serviceType).starts_with("GitLab");
    std::optional<std::string> url;
    if (adapter.isSelfHosted) {
        url = origin.url("");
    } else if (needsURL) {
        url = "https://gitlab.com";
    }
    auto credentials = credentialsFor(adapter.serviceType, url, "octavia", "demo-token-octavia");
    credentials->setCredentialType(adapter.credentialType);
    return credentials;
}

EveryAdapter::Outcome EveryAdapter::outcome() {
    const auto service = this->service();
    auto validation = validate(*service);
    return {std::move(validation), list(*service)};
}

EveryAdapter::Outcome EveryAdapter::outcomeOf(const emulator::Answer& answer) {
    origin.server.script({}, answer, 2);
    return outcome();
}

EveryAdapter::Outcome EveryAdapter::outcomeOf(const emulator::Fault& fault) {
    origin.server.fault({}, fault);
    return outcome();
}

void EveryAdapter::expectFailure(const Outcome& outcome, const std::string& domain,
                                 std::int64_t code) {
    for (const auto& error : {outcome.validation, outcome.listing->error()}) {
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(error->domain(), domain) << error->localizedDescription();
        EXPECT_EQ(error->code(), code) << error->localizedDescription();
    }
    EXPECT_EQ(outcome.listing->results(), std::nullopt);
    EXPECT_EQ(outcome.listing->page(), std::nullopt);
    EXPECT_EQ(outcome.listing->totalNumberOfPages(), std::nullopt);
}

void EveryAdapter::expectTransportError(const Outcome& outcome, RKTError::URLCode code) {
    expectFailure(outcome, RKTError::NSURLErrorDomain, code);
}

void EveryAdapter::expectStatusError(const Outcome& outcome, std::int64_t code) {
    expectFailure(outcome, RKTKorvoGitServiceErrorDomain, code);
}

void EveryAdapter::expectParsersError(const Outcome& outcome) {
    expectFailure(outcome, RKTError::NSCocoaErrorDomain, RKTError::NSPropertyListReadCorruptError);
}

emulator::Answer EveryAdapter::page(const std::string& elements) {
    const std::string array = "[" + elements + "]";
    return emulator::jsonAnswer(200,
                                GetParam().listsAnArray ? array : R"({"values": )" + array + "}");
}
