#include "CertificateAuthority.h"

#include <arpa/inet.h>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace emulator {

namespace {

template <auto Free>
struct Freeing {
    template <typename T>
    void operator()(T* object) const {
        Free(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Freeing<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freeing<X509_free>>;
using Bio = std::unique_ptr<BIO, Freeing<BIO_free>>;

constexpr long day = 24L * 60 * 60;

void require(bool ok, const char* what) {
    if (!ok) {
        throw std::runtime_error(std::string("certificate authority: ") + what);
    }
}

Key makeKey() {
    Key key(EVP_EC_gen("P-256"));
    require(key != nullptr, "no key");
    return key;
}

void addExtension(X509* certificate, X509* issuer, int nid, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, Freeing<X509_EXTENSION_free>> extension(
        X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str()));
    require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, "extension refused");
}

struct Period {
    long from;  // seconds from now
    long until;
};

/// A certificate without extensions and signature. Nothing as issuer: its own.
Certificate makeBare(EVP_PKEY* key, const std::string& commonName, X509* issuer, Period period) {
    Certificate certificate(X509_new());
    require(certificate != nullptr, "no certificate");
    std::array<unsigned char, 8> serial{};
    require(RAND_bytes(serial.data(), static_cast<int>(serial.size())) == 1, "no random bytes");
    serial[0] = (serial[0] & 0x3F) | 0x40;
    const std::unique_ptr<BIGNUM, Freeing<BN_free>> number(
        BN_bin2bn(serial.data(), static_cast<int>(serial.size()), nullptr));
    BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate.get()));
    X509_set_version(certificate.get(), X509_VERSION_3);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), period.from);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), period.until);
    X509_set_pubkey(certificate.get(), key);
    X509_NAME* name = X509_get_subject_name(certificate.get());
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(commonName.c_str()), -1, -1,
                               0);
    X509_set_issuer_name(certificate.get(), issuer ? X509_get_subject_name(issuer) : name);
    return certificate;
}

/// A client that trusts several authorities tells them apart by their names.
std::string distinctName(const std::string& commonName) {
    static std::atomic<int> count = 0;
    return commonName + " " + std::to_string(++count);
}

Certificate makeAuthorityCertificate(EVP_PKEY* key, const std::string& commonName) {
    auto certificate = makeBare(key, distinctName(commonName), nullptr, {-365 * day, 365 * day});
    X509* self = certificate.get();
    addExtension(self, self, NID_basic_constraints, "critical,CA:TRUE");
    addExtension(self, self, NID_key_usage, "critical,keyCertSign,cRLSign");
    addExtension(self, self, NID_subject_key_identifier, "hash");
    require(X509_sign(self, key, EVP_sha256()) > 0, "not signed");
    return certificate;
}

std::string subjectAltName(const std::vector<std::string>& names) {
    std::string text;
    for (const auto& name : names) {
        std::array<unsigned char, 16> address{};
        const bool isAddress = inet_pton(AF_INET, name.c_str(), address.data()) == 1 ||
                               inet_pton(AF_INET6, name.c_str(), address.data()) == 1;
        text += (text.empty() ? "" : ",") + std::string(isAddress ? "IP:" : "DNS:") + name;
    }
    return text;
}

std::string bioText(BIO* bio) {
    char* data = nullptr;
    const long length = BIO_get_mem_data(bio, &data);
    return {data, static_cast<std::size_t>(length)};
}

std::string pemOf(X509* certificate) {
    const Bio bio(BIO_new(BIO_s_mem()));
    require(PEM_write_bio_X509(bio.get(), certificate) == 1, "not written");
    return bioText(bio.get());
}

std::string pemOf(EVP_PKEY* key) {
    const Bio bio(BIO_new(BIO_s_mem()));
    require(PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr) == 1,
            "not written");
    return bioText(bio.get());
}

std::filesystem::path makePrivateDirectory() {
    auto path = (std::filesystem::temp_directory_path() / "korvogit-emulator-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "temporary directory");
    }
    return path;
}

}  // namespace

struct CertificateAuthority::Signer {
    explicit Signer(const std::string& commonName)
        : key(makeKey()), certificate(makeAuthorityCertificate(key.get(), commonName)) {}
    Key key;
    Certificate certificate;
};

CertificateAuthority::CertificateAuthority(std::vector<std::string> extraNames)
    : signer_(std::make_unique<Signer>("korvogit-emulator authority")), names_(usualNames()) {
    names_.insert(names_.end(), extraNames.begin(), extraNames.end());
    pem_ = pemOf(signer_->certificate.get());
    directory_ = makePrivateDirectory();
    file_ = directory_ / "ca.pem";
    std::ofstream(file_) << pem_ << std::flush;
    require(std::filesystem::file_size(file_) == pem_.size(), "CA file not written");
}

CertificateAuthority::~CertificateAuthority() {
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

Identity CertificateAuthority::makeLeaf(Leaf kind) const {
    const Key key = makeKey();
    const Signer* signer = kind == Leaf::SelfSigned ? nullptr : signer_.get();
    std::unique_ptr<Signer> stranger;
    if (kind == Leaf::OtherAuthority) {
        stranger = std::make_unique<Signer>("an authority that nobody trusts");
        signer = stranger.get();
    }
    Period period{-day, 90 * day};
    if (kind == Leaf::Expired) {
        period = {-30 * day, -day};
    } else if (kind == Leaf::NotYetValid) {
        period = {day, 30 * day};
    }
    X509* issuer = signer ? signer->certificate.get() : nullptr;
    const auto leaf = makeBare(key.get(), "korvogit-emulator", issuer, period);
    X509* self = leaf.get();
    addExtension(self, issuer ? issuer : self, NID_basic_constraints, "critical,CA:FALSE");
    addExtension(self, issuer ? issuer : self, NID_ext_key_usage, "serverAuth");
    addExtension(
        self, issuer ? issuer : self, NID_subject_alt_name,
        subjectAltName(kind == Leaf::WrongName ? std::vector<std::string>{"wrong-name.invalid"}
                                               : names_));
    EVP_PKEY* signingKey = signer ? signer->key.get() : key.get();
    require(X509_sign(self, signingKey, EVP_sha256()) > 0, "not signed");
    return {pemOf(self), pemOf(key.get())};
}

const std::vector<std::string>& CertificateAuthority::usualNames() {
    static const auto names = [] {
        std::vector<std::string> all{"localhost", "127.0.0.1", "::1", "ghe.example.com"};
        all.insert(all.end(), publicHosts().begin(), publicHosts().end());
        return all;
    }();
    return names;
}

const std::vector<std::string>& CertificateAuthority::publicHosts() {
    static const std::vector<std::string> hosts{"api.github.com", "github.com", "gitlab.com",
                                                "api.bitbucket.org", "bitbucket.org"};
    return hosts;
}

}  // namespace emulator
