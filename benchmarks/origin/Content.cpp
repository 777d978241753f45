// Writes what the origin serves: pages of repositories as the services send them, a small answer,
// large ones, and the certificate that it shows.

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

#include "Accounts.h"
#include "CertificateAuthority.h"
#include "Compression.h"
#include "GitHubRecords.h"
#include "GitLabRecords.h"

namespace {

namespace fs = std::filesystem;

const emulator::GitHubAddresses addresses{"https://api.github.com", "https://github.com",
                                          "github.com", "https://avatars.githubusercontent.com"};

void write(const fs::path& file, const std::string& bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

template <class Record>
std::string page(const std::vector<emulator::Repository>& repositories, Record record) {
    std::string text = "[";
    for (const auto& repository : repositories) {
        if (text.size() > 1) text += ",";
        text += record(repository);
    }
    return text + "]";
}

/// Ten pages, "0" to "9": whoever asks for more gets them again.
void writePages(const fs::path& folder, std::size_t perPage) {
    const auto viewer = emulator::generateAccount("octavia", "benchmark", 0);
    for (std::size_t index = 0; index < 10; ++index) {
        const auto repositories =
            emulator::generateRepositories(viewer.asOwner(), perPage, index + 1);
        const auto gitHub = page(repositories, [&](const auto& repository) {
            return gitHubRepositoryRecord(addresses, repository, viewer);
        });
        const auto gitLab = page(repositories, [](const auto& repository) {
            return emulator::gitLabProjectRecord("https://gitlab.com", "gitlab.com", repository);
        });
        const auto place = std::to_string(perPage) + "/" + std::to_string(index) + ".json";
        if (perPage == 100 && index == 0) write(folder / "page.json", gitHub);
        write(folder / "www/github" / (place + ".gz"), emulator::gzip(gitHub));
        write(folder / "www/gitlab" / (place + ".gz"), emulator::gzip(gitLab));
    }
}

/// JSON text of exactly each size, cut from as many records as it takes.
void writeBodies(const fs::path& folder, std::span<const std::size_t> sizes) {
    const auto viewer = emulator::generateAccount("octavia", "benchmark", 0);
    const auto record = [&](const auto& repository) {
        return gitHubRepositoryRecord(addresses, repository, viewer);
    };
    std::string text = page(emulator::generateRepositories(viewer.asOwner(), 1000), record);
    while (text.size() < std::ranges::max(sizes)) text += text;
    for (const auto size : sizes) {
        write(folder / "www/body" / (std::to_string(size) + ".json.gz"),
              emulator::gzip(std::string_view(text).substr(0, size)));
    }
}

}  // namespace

int main(int, char** words) {
    const fs::path folder = words[1];
    for (const std::size_t perPage : {10, 30, 100, 300, 1000}) writePages(folder, perPage);
    constexpr std::array<std::size_t, 7> bodySizes = {1U << 10, 1U << 13, 1U << 16, 1U << 19,
                                                      1U << 22, 1U << 25, 1U << 26};
    writeBodies(folder, bodySizes);
    write(folder / "www/small.json", "{\"login\": \"" + std::string(1011, 'o') + "\"}");

    const emulator::CertificateAuthority authority;
    const auto leaf = authority.makeLeaf(emulator::Leaf::Valid);
    write(folder / "ca.pem", authority.pem());
    write(folder / "leaf.pem", leaf.certificates);
    write(folder / "key.pem", leaf.privateKey);
}
