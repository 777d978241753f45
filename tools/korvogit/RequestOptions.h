#pragma once

#include <KorvoGitService/RKTServiceRequest.h>

#include <CLI/CLI.hpp>
#include <memory>

namespace korvogit {

/// Which repositories, in which order, which page. Numbers and texts go to the library as they are:
/// what a service makes of an unknown one is the library's matter.
class RequestOptions {
public:
    explicit RequestOptions(CLI::App& command);
    RequestOptions(const RequestOptions&) = delete;
    RequestOptions& operator=(const RequestOptions&) = delete;

    std::shared_ptr<const RKTRepositoriesRequest> request() const { return request_; }

private:
    std::shared_ptr<RKTRepositoriesRequest> request_ = std::make_shared<RKTRepositoriesRequest>();
};

}  // namespace korvogit
