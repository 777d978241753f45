#include "tools/korvogit-emulator/CertificateAuthority.h"

#include <gtest/gtest.h>
#include <openssl/x509_vfy.h>

#include <fstream>
#include <sstream>

#include "Client.h"
#include "tools/korvogit-emulator/Server.h"

namespace {

using emulator::CertificateAuthority;
using emulator::Leaf;
using emulator::Server;
using emulator_test::Client;
using emulator_test::Tls;

TEST(EmulatorCertificateAuthority, WritesItsCertificateAndRemovesItAtTheEnd) {
    std::filesystem::path file;
    {
        const CertificateAuthority authority;
        file = authority.file();
        std::ostringstream text;
        text << std::ifstream(file).rdbuf();
        EXPECT_EQ(text.str(), authority.pem());
        EXPECT_NE(text.str().find("-----BEGIN CERTIFICATE-----"), std::string::npos);
        EXPECT_EQ(text.str().find("PRIVATE"), std::string::npos);
    }
    EXPECT_FALSE(std::filesystem::exists(file.parent_path()));
}

TEST(EmulatorCertificateAuthority, IsTrustedForTheNamesOfTheServicesAndForExtraOnes) {
    const Server server({.extraNames = {"git.example.net", "127.0.0.9"}});
    auto names = CertificateAuthority::usualNames();
    names.emplace_back("git.example.net");
    for (const auto& name : names) {
        if (name.find_first_not_of("0123456789.:") == std::string::npos) {
            continue;  // the client checks host names only
        }
        Client client(server.httpsPort(), Tls{server.caFile(), name});
        EXPECT_TRUE(client.isSecure()) << name;
    }
    Client stranger(server.httpsPort(), Tls{server.caFile(), "elsewhere.example"});
    EXPECT_EQ(stranger.verifyResult(), X509_V_ERR_HOSTNAME_MISMATCH);
}

TEST(EmulatorCertificateAuthority, IsNotTrustedByAClientOfAnotherOne) {
    const Server server;
    const CertificateAuthority other;
    Client client(server.httpsPort(), Tls{other.file()});
    EXPECT_FALSE(client.isSecure());
}

struct Untrusted {
    Leaf leaf;
    long verifyResult;
};

class EmulatorLeaf : public testing::TestWithParam<Untrusted> {};

TEST_P(EmulatorLeaf, FailsForItsOwnReasonAndOnlyWhilePresented) {
    Server server;
    server.presentCertificate(GetParam().leaf);
    Client client(server.httpsPort(), Tls{server.caFile()});
    EXPECT_FALSE(client.isSecure());
    EXPECT_EQ(client.verifyResult(), GetParam().verifyResult);
    server.presentCertificate(Leaf::Valid);
    EXPECT_TRUE(Client(server.httpsPort(), Tls{server.caFile()}).isSecure());
}

INSTANTIATE_TEST_SUITE_P(
    Untrusted, EmulatorLeaf,
    testing::Values(Untrusted{Leaf::Expired, X509_V_ERR_CERT_HAS_EXPIRED},
                    Untrusted{Leaf::NotYetValid, X509_V_ERR_CERT_NOT_YET_VALID},
                    Untrusted{Leaf::WrongName, X509_V_ERR_HOSTNAME_MISMATCH},
                    Untrusted{Leaf::SelfSigned, X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT},
                    Untrusted{Leaf::OtherAuthority, X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY}));

}  // namespace
