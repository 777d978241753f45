#include "Load.h"

#include <utility>

namespace soak {

namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t mostInFlight = 100;
constexpr std::size_t mostTasks = 200;

struct Kind {
    const char* serviceType;
    const char* credentialType;
    const char* url;  // null: one's own server
};

constexpr Kind kindTable[Load::kinds] = {
    {"GitHub", "Token", "https://github.com"},        {"GitHubEnterprise", "Token", nullptr},
    {"GitLab", "Token", "https://gitlab.com"},        {"GitLabSelfHosted", "Token", nullptr},
    {"Bitbucket", "OAuth2", "https://bitbucket.org"}, {"BitbucketServer", "Basic", nullptr},
};

/// Those that exchange tokens.
constexpr const char* exchanging[] = {"GitHub", "Bitbucket"};

Outcome outcomeOf(const std::optional<RKTError>& error) {
    if (!error) return Outcome::Succeeded;
    return error->code() == RKTError::NSURLErrorCancelled ? Outcome::Cancelled : Outcome::Failed;
}

std::shared_ptr<RKTRepositoriesRequest> randomRequest(std::mt19937_64& random) {
    auto request = std::make_shared<RKTRepositoriesRequest>();
    request->setSortKey(static_cast<RKTServiceSortKey>(random() % 6));
    request->setSortDirection(static_cast<RKTServiceSortDirection>(random() % 3));
    request->setPage(RKTNumber(1 + random() % 8));
    request->setCountPerPage(RKTNumber(1 + random() % 50));
    return request;
}

}  // namespace

Load::Load(Books& books, std::size_t services, std::string selfHostedURL)
    : books_(books), selfHostedURL_(std::move(selfHostedURL)) {
    while (services_.size() < services) services_.push_back(makeService(services_.size()));
}

Load::~Load() {
    stop();
    endServices();
}

void Load::useEachOnce(const std::function<void()>& wait) {
    Random random(1);
    for (std::size_t index = 0; index < kinds; ++index) {
        const auto service = serviceAt(index);
        validate(*service);
        wait();
        list(service, random);
        wait();
    }
    for (const char* serviceType : exchanging) {
        exchangeToken(serviceType, false);
        wait();
    }
    // A redirect makes a token request one that leaves its connection to others.
    for (const char* url : {"https://github.com/", "https://bitbucket.org/"}) {
        get(url);
        wait();
    }
}

void Load::start(std::size_t threads, std::uint64_t seed) {
    stopping_ = false;
    while (threads_.size() < threads) {
        threads_.emplace_back([this, random = Random(seed + threads_.size())] { work(random); });
    }
}

void Load::stop() {
    stopping_ = true;
    for (auto& thread : threads_) thread.join();
    threads_.clear();
}

void Load::work(Random random) {
    while (!stopping_) {
        if (books_.waitForFewerThan(mostInFlight, 100ms)) step(random);
    }
}

void Load::step(Random& random) {
    const auto index = random() % services_.size();
    const auto dice = random() % 100;
    if (dice < 45) {
        list(serviceAt(index), random);
    } else if (dice < 70) {
        validate(*serviceAt(index));
    } else if (dice < 80) {
        exchangeToken(exchanging[random() % 2], random() % 2 == 0);
    } else if (dice < 97) {
        cancelOne(random);
    } else {
        replace(index, dice == 97);
    }
}

Load::Service Load::makeService(std::size_t index) {
    const Kind& kind = kindTable[index % kinds];
    auto credentials =
        std::make_shared<RKTServiceCredentials>(kind.serviceType, kind.credentialType);
    credentials->setURL(RKTURL::URLWithString(kind.url ? kind.url : selfHostedURL_));
    credentials->setUser("octavia");
    const bool takesPassword = std::string_view(kind.credentialType) == "Basic";
    credentials->setToken(takesPassword ? "demo-password-octavia" : "demo-token-octavia");
    ++servicesMade_;
    return RKTService::serviceWithCredentials(credentials);
}

Load::Service Load::serviceAt(std::size_t index) const {
    const std::lock_guard lock(mutex_);
    return services_[index];
}

void Load::replace(std::size_t index, bool cancelling) {
    auto service = makeService(index);
    {
        const std::lock_guard lock(mutex_);
        std::swap(service, services_[index]);
        std::erase_if(ended_, [](const auto& ended) { return ended.expired(); });
        ended_.push_back(service);
    }
    cancelling ? service->invalidateAndCancel() : service->finishTasksAndInvalidate();
}

void Load::validate(RKTService& service) {
    remember(service.validateCredentialsWithCompletionHandler(
        [entry = books_.start()](auto error) { entry->complete(outcomeOf(error)); }));
}

// Now and then the handler goes on, or ends its own service.
void Load::list(const Service& service, Random& random) {
    const auto dice = random() % 20;
    remember(service->fetchRepositoriesWithRequest(
        randomRequest(random),
        [this, dice, entry = books_.start(), weak = std::weak_ptr(service)](const auto& result) {
            const auto held = weak.lock();
            if (held && dice == 0 && !stopping_) validate(*held);
            if (held && dice == 1) held->finishTasksAndInvalidate();
            entry->complete(outcomeOf(result->error()));
        }));
}

void Load::exchangeToken(const char* serviceType, bool isRefresh) {
    auto credentials = std::make_shared<RKTServiceCredentials>(serviceType, "OAuth2");
    credentials->setOAuthClientID("demo-client");
    credentials->setOAuthClientSecret("demo-secret");
    credentials->setOAuthCode("code");
    remember(RKTService::classForServiceType(serviceType)
                 ->updateOAuth2AccessTokenWithCredentials(
                     credentials, isRefresh,
                     [entry = books_.start()](auto error) { entry->complete(outcomeOf(error)); }));
}

void Load::get(const char* url) {
    auto task = RKTURLSession::sharedSession()->dataTaskWithRequest(
        RKTURLRequest(RKTURL::URLWithString(url)),
        [entry = books_.start()](const auto&, const auto&, const auto& error) {
            entry->complete(outcomeOf(error));
        });
    task->resume();
    remember(std::move(task));
}

void Load::cancelOne(Random& random) {
    Task task;
    {
        const std::lock_guard lock(mutex_);
        if (tasks_.empty()) return;
        task = tasks_[random() % tasks_.size()];
    }
    task->cancel();
}

void Load::remember(Task task) {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    if (tasks_.size() > mostTasks) tasks_.pop_front();
}

void Load::endServices() {
    std::vector<Service> services;
    {
        const std::lock_guard lock(mutex_);
        tasks_.clear();
        services.swap(services_);
        ended_.insert(ended_.end(), services.begin(), services.end());
    }
    for (std::size_t index = 0; index < services.size(); ++index) {
        index % 2 == 0 ? services[index]->finishTasksAndInvalidate()
                       : services[index]->invalidateAndCancel();
    }
}

std::size_t Load::livingServices() {
    const std::lock_guard lock(mutex_);
    std::erase_if(ended_, [](const auto& ended) { return ended.expired(); });
    return services_.size() + ended_.size();
}

}  // namespace soak
