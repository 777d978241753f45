#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace emulator {

/// What a server shows of itself in a TLS handshake, as PEM texts.
struct Identity {
    std::string certificates;  ///< the leaf, then whatever goes with it
    std::string privateKey;
};

/// The kinds of certificate that a client has to tell apart.
enum class Leaf {
    Valid,           ///< signed by this authority, for all the hosts' names
    Expired,         ///< the same, but its time ended yesterday
    NotYetValid,     ///< the same, but its time begins tomorrow
    WrongName,       ///< valid, but only for wrong-name.invalid
    SelfSigned,      ///< signed by its own key
    OtherAuthority,  ///< signed by an authority that nobody trusts
};

/// An authority of its own for each emulator, so that no key outlives the process that made it.
/// Its certificate lies in a file in a fresh private directory, removed with the authority. EC keys
/// on P-256. Throws std::runtime_error when OpenSSL or the file system refuses.
class CertificateAuthority {
public:
    /// `extraNames`: host names or addresses that leaves are valid for, besides `usualNames()`.
    explicit CertificateAuthority(std::vector<std::string> extraNames = {});
    ~CertificateAuthority();
    CertificateAuthority(const CertificateAuthority&) = delete;
    CertificateAuthority& operator=(const CertificateAuthority&) = delete;

    /// The PEM file to trust.
    const std::filesystem::path& file() const { return file_; }
    /// The same as text.
    const std::string& pem() const { return pem_; }

    Identity makeLeaf(Leaf kind) const;

    /// localhost, 127.0.0.1, ::1, ghe.example.com and `publicHosts()`.
    static const std::vector<std::string>& usualNames();
    /// The hosts of the public services.
    static const std::vector<std::string>& publicHosts();

private:
    struct Signer;
    std::unique_ptr<Signer> signer_;
    std::vector<std::string> names_;
    std::string pem_;
    std::filesystem::path directory_;
    std::filesystem::path file_;
};

}  // namespace emulator
