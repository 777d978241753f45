// Answers that the real services gave, served again: what is asked for, and what becomes of them.
//
// tests/data/samples/SERVICE/NAME.body is the body as served; NAME.meta.json holds the status and
// headers that went with it, the account and request that it answers, and what is expected.
// "{HTTPS}" stands for the emulator's address. Those of the folder "oauth" are read elsewhere.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <ranges>

#include "tests/helpers/Services.h"

namespace {

using nlohmann::json;

struct Sample {
    std::string name;
    std::filesystem::path folder;

    std::string read(const char* extension) const {
        std::ifstream file(folder / (name + extension), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

void PrintTo(const Sample& sample, std::ostream* stream) {
    *stream << sample.folder.filename().string() << "/" << sample.name;
}

std::vector<Sample> samples() {
    constexpr std::string_view extension = ".meta.json";
    std::vector<Sample> found;
    const std::filesystem::path root = TEST_DATA_DIR "/samples";
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        const std::string file = entry.path().filename().string();
        const auto folder = entry.path().parent_path();
        if (!file.ends_with(extension) || folder.filename() == "oauth") continue;
        found.push_back({file.substr(0, file.size() - extension.size()), folder});
    }
    std::ranges::sort(found, {}, [](const Sample& sample) { return sample.folder / sample.name; });
    return found;
}

std::string testName(const testing::TestParamInfo<Sample>& info) {
    std::string name = info.param.folder.filename().string() + "_" + info.param.name;
    std::ranges::replace_if(name, [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
}

/// Values of the library as the expectations write them: null for nothing.
json value(const std::optional<std::string>& text) {
    return text ? json(*text) : json();
}

json value(const std::optional<RKTURL>& url) {
    return url ? json(url->absoluteString()) : json();
}

json value(const std::optional<RKTNumber>& number) {
    if (!number) return {};
    switch (number->type()) {
        case RKTNumber::Type::Boolean:
            return number->boolValue();
        case RKTNumber::Type::Signed:
            return number->integerValue();
        case RKTNumber::Type::Unsigned:
            return number->unsignedIntegerValue();
        case RKTNumber::Type::Floating:
            break;
    }
    return number->doubleValue();
}

json value(const std::optional<RKTServiceIdentifier>& identifier) {
    if (!identifier) return {};
    const auto text = identifier->stringValue();
    return text ? json(*text) : value(identifier->numberValue());
}

json value(const RKTServiceRepository& repository) {
    return {
        {"identifier", value(repository.identifier())},
        {"name", value(repository.name())},
        {"fullName", value(repository.fullName())},
        {"descriptiveText", value(repository.descriptiveText())},
        {"path", value(repository.path())},
        {"fullPath", value(repository.fullPath())},
        {"ownerIdentifier", value(repository.ownerIdentifier())},
        {"ownerName", value(repository.ownerName())},
        {"state", value(repository.state())},
        {"visibility", value(repository.visibility())},
        {"isFork", value(repository.isFork())},
        {"numberOfStars", value(repository.numberOfStars())},
        {"numberOfForks", value(repository.numberOfForks())},
        {"avatarURL", value(repository.avatarURL())},
        {"webURL", value(repository.webURL())},
        {"SSHRepositoryURL", value(repository.SSHRepositoryURL())},
        {"HTTPSRepositoryURL", value(repository.HTTPSRepositoryURL())},
        {"defaultBranchName", value(repository.defaultBranchName())},
    };
}

json value(const std::optional<RKTError>& error) {
    if (!error) return {};
    const bool isParsers = error->domain() == RKTError::NSCocoaErrorDomain &&
                           error->code() == RKTError::NSPropertyListReadCorruptError;
    if (isParsers) return {{"kind", "parser"}};
    return {
        {"kind", "rkt"},
        {"domain", error->domain()},
        {"code", error->code()},
        {"description", error->localizedDescription()},
        {"recoverySuggestion", value(error->localizedRecoverySuggestion())},
        {"url", value(error->URL())},
    };
}

json value(const RKTServiceArrayResult& result) {
    json relations;
    if (const auto links = result.linkRelations()) {
        relations = json::object();
        for (const auto& [name, url] : *links) relations[name] = url.absoluteString();
    }
    json repositories;
    if (const auto results = result.results()) {
        repositories = json::array();
        for (const auto& repository : *results) repositories.push_back(value(*repository));
    }
    return {
        {"error", value(result.error())},
        {"linkRelations", relations},
        {"results", repositories},
        {"page", value(result.page())},
        {"totalNumberOfPages", value(result.totalNumberOfPages())},
    };
}

std::optional<std::string> textIn(const json& dictionary, const char* key) {
    const auto found = dictionary.find(key);
    if (found == dictionary.end() || found->is_null()) return std::nullopt;
    return found->get<std::string>();
}

class RecordedAnswers : public testing::TestWithParam<Sample> {
protected:
    json meta() const {
        std::string text = GetParam().read(".meta.json");
        constexpr std::string_view placeholder = "{HTTPS}";
        for (auto at = text.find(placeholder); at != text.npos; at = text.find(placeholder, at)) {
            text.replace(at, placeholder.size(), origin.authority());
        }
        return json::parse(text);
    }

    void serve(const json& meta) {
        emulator::Answer answer{.status = meta.at("status").get<unsigned>(),
                                .reason = {},
                                .headers = {},
                                .body = GetParam().read(".body")};
        for (const auto& header : meta.at("headers")) {
            answer.headers.add(header.at(0).get<std::string>(), header.at(1).get<std::string>());
        }
        origin.server.script({}, std::move(answer));
    }

    static std::shared_ptr<RKTService> service(const json& described) {
        const auto credentials =
            credentialsFor(described.at("serviceType").get<std::string>(), textIn(described, "URL"),
                           textIn(described, "user"), textIn(described, "token"));
        credentials->setCredentialType(textIn(described, "credentialType"));
        return serviceWith(credentials);
    }

    static std::shared_ptr<RKTRepositoriesRequest> request(const json& described) {
        auto request = std::make_shared<RKTRepositoriesRequest>();
        const auto number = [&](const char* key) {
            return described.contains(key) ? std::optional<RKTNumber>(described.at(key).get<int>())
                                           : std::nullopt;
        };
        request->setSortKey(static_cast<RKTServiceSortKey>(described.value("sortKey", 0U)));
        request->setSortDirection(
            static_cast<RKTServiceSortDirection>(described.value("sortDirection", 0U)));
        request->setPage(number("page"));
        request->setCountPerPage(number("countPerPage"));
        request->setState(textIn(described, "state"));
        request->setVisibility(textIn(described, "visibility"));
        return request;
    }

    /// What came of it, in the form of the expectation.
    static json outcome(const json& meta) {
        const auto& described = meta.at("request");
        const auto service = RecordedAnswers::service(described.at("credentials"));
        if (meta.at("kind") == "validate") return {{"error", value(validate(*service))}};
        EXPECT_EQ(meta.at("kind"), "list");
        return {{"result", value(*list(*service, request(described.at("listing"))))}};
    }

    void expectRequest(const json& expected) const {
        const auto requests = origin.server.requests();
        ASSERT_EQ(requests.size(), 1U);
        const auto& sent = requests.front();
        EXPECT_EQ(json(sent.method), expected.at("method"));
        EXPECT_EQ(json(sent.tls), expected.at("tls"));
        EXPECT_EQ(json(sent.authority), expected.at("authority"));
        EXPECT_EQ(json(sent.path), expected.at("path"));
        EXPECT_EQ(sent.body, "");
        json query = json::array();
        for (const auto& item : sent.queryItems()) query.push_back({item.name, item.value});
        std::sort(query.begin(), query.end());
        EXPECT_EQ(query, expected.at("query"));
        for (const auto& [name, header] : expected.at("headers").items()) {
            EXPECT_EQ(value(sent.headers.get(name)), header) << name;
        }
    }

    SharedOrigin origin;
};

/// Puts what came in the place of what was expected where both are equally right.
void accept(const json& alternatives, json& expected, const json& actual) {
    for (const auto& [path, values] : alternatives.items()) {
        const json::json_pointer pointer("/" + path);
        const json came = actual.value(pointer, json());
        if (std::ranges::find(values, came) != values.end()) expected[pointer] = came;
    }
}

/// The statuses' texts are this library's own choice among the acceptable ones.
void leaveOutAlternatives(json& error) {
    if (error.is_object()) error.erase("descriptionAccept");
}

TEST_P(RecordedAnswers, AreAskedForAndReadRight) {
    const json meta = this->meta();
    serve(meta);
    json actual = outcome(meta);
    const json& expect = meta.at("expect");
    expectRequest(expect.at("request"));

    const char* part = meta.at("kind") == "validate" ? "error" : "result";
    json expected = expect.at(part);
    leaveOutAlternatives(expected);
    if (expected.is_object() && expected.contains("error")) leaveOutAlternatives(expected["error"]);
    accept(expect.at("accept"), expected, actual.at(part));
    EXPECT_EQ(json::diff(expected, actual.at(part)), json::array());
}

INSTANTIATE_TEST_SUITE_P(, RecordedAnswers, testing::ValuesIn(samples()), testName);

}  // namespace
