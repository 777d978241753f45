// Whom the program and its library trust, whatever its surroundings say.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/helpers/Program.h"
#include "tests/helpers/Services.h"
#include "tests/helpers/TemporaryFolder.h"
#include "tests/security/Planted.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// A home with all the files that other programs would take orders or accounts from.
class HostileHome {
public:
    std::string path() const { return folder_.path().string(); }
    void write(const std::string& name, const std::string& text) const {
        std::ofstream(folder_.path() / name) << text;
    }

private:
    const rkt::tests::TemporaryFolder folder_;
};

class Trust : public testing::Test {
protected:
    Trust() {
        const std::string account = " login planted-login password planted-password\n";
        const std::string netrc = "machine api.github.com" + account + "machine localhost" +
                                  account + "default" + account;
        const std::string orders = "insecure\ncacert = \"" + server.caFile().string() +
                                   "\"\nproxy = \"" + proxy.url() + "\"\nnetrc\n";
        for (const char* name : {".netrc", "_netrc"}) home.write(name, netrc);
        for (const char* name : {".curlrc", "_curlrc", "curlrc"}) home.write(name, orders);
        std::filesystem::permissions(home.path() + "/.netrc", std::filesystem::perms::owner_read);
    }

    /// Everything that could name an authority, a proxy or a switch to other programs.
    std::map<std::string, std::string> hostileEnvironment() const {
        std::map<std::string, std::string> environment = {
            {"HOME", home.path()},
            {"CURL_HOME", home.path()},
            {"XDG_CONFIG_HOME", home.path()},
            {"NETRC", home.path() + "/.netrc"},
            {"SSL_CERT_DIR", server.caFile().parent_path().string()},
            {"GIT_SSL_NO_VERIFY", "1"},
            {"NODE_TLS_REJECT_UNAUTHORIZED", "0"},
            {"PYTHONHTTPSVERIFY", "0"},
            {"CURL_INSECURE", "1"},
            {"CURLOPT_SSL_VERIFYPEER", "0"},
            {"no_proxy", "localhost"},
        };
        for (const char* name : {"SSL_CERT_FILE", "CURL_CA_BUNDLE", "REQUESTS_CA_BUNDLE",
                                 "GIT_SSL_CAINFO", "CURL_SSL_CAINFO"}) {
            environment[name] = server.caFile().string();
        }
        for (const char* name :
             {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "HTTP_PROXY"}) {
            environment[name] = proxy.url();
        }
        return environment;
    }

    Ended validate(const std::vector<std::string>& more) const {
        Launch launch{
            .program = KORVOGIT_PROGRAM,
            .arguments = {"validate", "--service", "GitHub", "--user", "octavia", "--format",
                          "json", "--connect-to",
                          "api.github.com:443:127.0.0.1:" + std::to_string(server.httpsPort())},
            .environment = hostileEnvironment()};
        launch.arguments.insert(launch.arguments.end(), more.begin(), more.end());
        launch.environment["KORVOGIT_TOKEN"] = "demo-token-octavia";
        return run(launch);
    }

    emulator::Server server;
    emulator::ForwardProxy proxy{emulator::ForwardProxy::Behaviour::Forbid};
    HostileHome home;
};

TEST_F(Trust, IsInNoAuthorityThatTheEnvironmentNames) {
    const Ended ended = validate({});
    EXPECT_EQ(ended.status, 1);
    const auto error = nlohmann::json::parse(ended.output).at("error");
    EXPECT_EQ(error.at("domain"), "NSURLErrorDomain");
    EXPECT_EQ(error.at("code"), RKTError::NSURLErrorServerCertificateHasUnknownRoot);
    EXPECT_EQ(server.requestCount(), 0U);
}

TEST_F(Trust, IsInTheAuthorityThatTheSettingsName) {
    const Ended ended = validate({"--cacert", server.caFile().string()});
    EXPECT_EQ(ended.status, 0) << ended.output << ended.error;
    const auto requests = server.requests();
    ASSERT_THAT(requests, SizeIs(1));
    EXPECT_EQ(requests[0].headers.get("Authorization"),
              "Basic " + emulator::base64("octavia:demo-token-octavia"));
    EXPECT_THAT(proxy.requests(), IsEmpty());
}

TEST_F(Trust, IsInTheSystemsAuthoritiesNoMoreWhenTheSettingsNameOne) {
    const emulator::CertificateAuthority another;
    const Ended ended = validate({"--cacert", another.file().string()});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.output, HasSubstr("\"NSURLErrorDomain\""));
    EXPECT_EQ(server.requestCount(), 0U);
}

TEST_F(Trust, NeedsAValidCertificateWhateverTheSettings) {
    using emulator::Leaf;
    for (const Leaf leaf : {Leaf::Expired, Leaf::NotYetValid, Leaf::WrongName, Leaf::SelfSigned,
                            Leaf::OtherAuthority}) {
        server.presentCertificate(leaf);
        RKTNetworkSettings settings = settingsFor(server);
        // The name that is asked for is what must be on the certificate, not that of the address.
        settings.hostMappings.push_back(
            {"wrong-name.invalid", 443, "127.0.0.1", server.httpsPort()});
        for (const std::string& host :
             {std::string("api.github.com"), "localhost:" + std::to_string(server.httpsPort())}) {
            const auto loaded = std::make_shared<Awaited<Loaded>>();
            const auto session = RKTURLSession::sessionWithConfiguration({settings});
            Origin::task(*session, requestTo("https://" + host + "/"), loaded)->resume();
            EXPECT_EQ(loaded->first().error->domain(), RKTError::NSURLErrorDomain);
            EXPECT_LE(loaded->first().code(), RKTError::NSURLErrorSecureConnectionFailed);
        }
    }
    EXPECT_EQ(server.requestCount(), 0U);
}

/// A proxy that is spoken to by TLS is a server like others.
TEST_F(Trust, NeedsAValidCertificateOfAProxyToo) {
    const emulator::Server another;  // of an authority that is not trusted
    RKTNetworkSettings settings = settingsFor(server);
    settings.proxy = "https://127.0.0.1:" + std::to_string(another.httpsPort());
    const auto loaded = std::make_shared<Awaited<Loaded>>();
    const auto session = RKTURLSession::sessionWithConfiguration({settings});
    Origin::task(*session, requestTo("https://api.github.com/"), loaded)->resume();
    EXPECT_LE(loaded->first().code(), RKTError::NSURLErrorSecureConnectionFailed);
    EXPECT_EQ(another.requestCount(), 0U);
}

// The settings' members, one by one: whoever adds one has to think here whether it could switch a
// check off.
TEST(TrustOfTheSettings, CanBeChangedByTheseOnly) {
    const auto [proxy, certificateAuthorityFile, hostMappings, timeoutIntervalForRequest,
                timeoutIntervalForResource, maximumBodySize, maximumConnectionsPerOrigin,
                maximumIdleConnections] = RKTNetworkSettings();
    const auto [networkSettings] = RKTURLSessionConfiguration();
    EXPECT_EQ(networkSettings, RKTNetworkSettings());
    EXPECT_EQ(certificateAuthorityFile, std::nullopt);
    EXPECT_EQ(proxy, std::nullopt);
    EXPECT_THAT(hostMappings, IsEmpty());
}

class AccountsInAddresses : public testing::Test {
protected:
    SharedOrigin origin;
};

TEST_F(AccountsInAddresses, AreNotSentByTheLibraryBelow) {
    const std::string place = "me:planted-password@" + origin.authority();
    for (const char* type : {"GitHubEnterprise", "GitLabSelfHosted", "BitbucketServer"}) {
        const auto service = serviceWith(
            credentialsFor(type, "https://" + place + "/", "octavia", "demo-token-octavia"));
        EXPECT_EQ(validate(*service), std::nullopt);
        list(*service);
    }
    // Bitbucket Server signs only what it knows; no other account may take the place.
    const auto anonymous = credentialsFor("BitbucketServer", "https://" + place + "/", "octavia");
    anonymous->setCredentialType("None");
    validate(*serviceWith(anonymous));
    EXPECT_EQ(origin.server.requests().back().headers.get("Authorization"), std::nullopt);
    EXPECT_THAT(origin.server.requests(), SizeIs(7));
    for (const auto& request : origin.server.requests()) {
        EXPECT_EQ(request.authority, origin.authority());
        planted::expectNothingTold(request.target);
        for (const auto& [name, value] : request.headers) {
            planted::expectNothingTold(value);
            EXPECT_EQ(value.find(emulator::base64("me:planted-password")), std::string::npos);
        }
    }
}

}  // namespace
