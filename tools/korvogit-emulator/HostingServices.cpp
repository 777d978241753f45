#include "HostingServices.h"

#include "BitbucketOAuth.h"
#include "BitbucketServerService.h"
#include "BitbucketService.h"
#include "GitHubOAuth.h"
#include "GitHubService.h"
#include "GitLabService.h"

namespace emulator {

std::vector<std::unique_ptr<HostingService>> makeHostingServices(const ServiceSettings& settings) {
    std::vector<std::unique_ptr<HostingService>> services;
    services.push_back(std::make_unique<GitHubService>(settings, GitHubService::Edition::Public));
    services.push_back(
        std::make_unique<GitHubService>(settings, GitHubService::Edition::Enterprise));
    services.push_back(std::make_unique<BitbucketService>(settings));
    services.push_back(std::make_unique<BitbucketServerService>(settings));
    services.push_back(std::make_unique<GitLabService>(settings));
    services.push_back(std::make_unique<GitHubOAuth>(settings));
    services.push_back(std::make_unique<BitbucketOAuth>(settings));
    return services;
}

}  // namespace emulator
