// What an application does with the library, at random and from several threads.

#pragma once

#include <KorvoGitService/RKTService.h>

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Books.h"

namespace soak {

/// Services of all six kinds, and threads that use, cancel, end and replace them.
class Load {
public:
    /// How many kinds of services there are.
    static constexpr std::size_t kinds = 6;

    /// @param selfHostedURL  where the services of one's own servers are
    Load(Books& books, std::size_t services, std::string selfHostedURL);
    ~Load();
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

    /// One operation of each kind on one service of each kind, so that every host is asked.
    /// @param wait  called after each, returns when it is over
    void useEachOnce(const std::function<void()>& wait);
    void start(std::size_t threads, std::uint64_t seed);
    /// Returns when the threads have ended; work may still be under way.
    void stop();
    /// Ends all services, some with their work, some after it.
    void endServices();
    /// How many services exist, those included that were ended and are not yet freed.
    std::size_t livingServices();
    std::uint64_t servicesMade() const { return servicesMade_; }

private:
    using Random = std::mt19937_64;
    using Service = std::shared_ptr<RKTService>;
    using Task = std::shared_ptr<RKTURLSessionDataTask>;

    void work(Random random);
    void step(Random& random);

    Service makeService(std::size_t index);
    Service serviceAt(std::size_t index) const;
    void replace(std::size_t index, bool cancelling);

    void validate(RKTService& service);
    void list(const Service& service, Random& random);
    void exchangeToken(const char* serviceType, bool isRefresh);
    void get(const char* url);
    void cancelOne(Random& random);
    void remember(Task task);

    Books& books_;
    const std::string selfHostedURL_;
    std::atomic<bool> stopping_ = false;
    std::atomic<std::uint64_t> servicesMade_ = 0;
    std::vector<std::thread> threads_;

    mutable std::mutex mutex_;
    std::vector<Service> services_;
    std::vector<std::weak_ptr<RKTService>> ended_;  // perhaps not freed yet
    std::deque<Task> tasks_;                        // the last ones that were started
};

}  // namespace soak
