// Answers as bytes, through the loader. The input is all that the server sends.

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "KorvoGitService/RKTURLSession.h"
#include "fuzz/common/Loopback.h"
#include "fuzz/common/Plain.h"
#include "fuzz/common/Target.h"

namespace {

using fuzz::require;
using namespace std::chrono_literals;

constexpr std::size_t maximumBodySize = 4096;
constexpr std::string_view secret = "s3cr3t";

struct Ending {
    std::optional<std::string> data;
    std::shared_ptr<const RKTHTTPURLResponse> response;
    std::optional<RKTError> error;
};

/// Counts what a task's handler is called for.
class Endings {
public:
    void put(Ending ending) {
        const std::lock_guard lock(mutex_);
        last_ = std::move(ending);
        ++count_;
        changed_.notify_all();
    }

    /// The one ending of a task, once whatever was behind it in the queue has run too.
    Ending wait(RKTOperationQueue& queue) {
        std::unique_lock lock(mutex_);
        require(changed_.wait_for(lock, 20s, [this] { return count_ > 0; }), "a task ends");
        queue.addOperation([this] {
            const std::lock_guard inner(mutex_);
            drained_ = true;
            changed_.notify_all();
        });
        require(changed_.wait_for(lock, 20s, [this] { return drained_; }), "the queue goes on");
        require(count_ == 1, "a task ends once");
        return last_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    Ending last_;
    int count_ = 0;
    bool drained_ = false;
};

/// With a redirect in it an answer may lead anywhere; by way of a proxy that, too, is here.
std::shared_ptr<RKTURLSession> sessionFor(std::string_view answer) {
    const auto make = [](bool byProxy) {
        RKTNetworkSettings settings;
        settings.timeoutIntervalForRequest = 10s;
        settings.maximumBodySize = maximumBodySize;
        if (byProxy) {
            settings.proxy =
                "http://127.0.0.1:" + std::to_string(fuzz::Loopback::instance().port());
        }
        return RKTURLSession::sessionWithConfiguration({settings});
    };
    static const auto& direct = *new std::shared_ptr(make(false));
    static const auto& byProxy = *new std::shared_ptr(make(true));
    const bool mayRedirect = fuzz::plain::lowered(answer).find("location") != answer.npos;
    return mayRedirect ? byProxy : direct;
}

void checkResponse(const RKTHTTPURLResponse& response) {
    require(response.statusCode() > 0 && response.statusCode() <= 999, "a status");
    std::size_t bytes = 0;
    for (const auto& [name, value] : response.allHeaderFields()) {
        require((name + value).find_first_of("\r\n") == std::string::npos, "fields have one line");
        require(name.find(':') == std::string::npos, "a name ends at the colon");
        bytes += name.size() + value.size();
    }
    require(bytes <= (256 << 10), "headers have a limit");
}

/// @param answer  may hold the secret itself: fuzzing finds out what is searched for
void checkError(const RKTError& error, std::string_view answer) {
    require(error.domain() == RKTError::NSURLErrorDomain && error.code() < 0, "a transport error");
    require(error.code() != RKTError::NSURLErrorCancelled, "nobody cancelled");
    require(error.code() != RKTError::NSURLErrorTimedOut, "a closed connection is no silence");
    require(!error.localizedDescription().empty(), "an error has a description");
    for (const auto& [key, value] : error.userInfo()) {
        const auto* text = std::get_if<std::string>(&value);
        require(!text || text->find(secret) == text->npos || answer.find(secret) != answer.npos,
                "an error tells no secret");
    }
}

}  // namespace

FUZZ_TARGET(HTTPAnswer) {
    auto& server = fuzz::Loopback::instance();
    server.setAnswer(input);
    RKTURLRequest request(RKTURL::URLWithString("http://u:" + std::string(secret) +
                                                "@127.0.0.1:" + std::to_string(server.port()) +
                                                "/?q=" + std::string(secret)));
    request.setValue("Basic " + std::string(secret), "Authorization");

    const auto session = sessionFor(input);
    const auto endings = std::make_shared<Endings>();
    session
        ->dataTaskWithRequest(std::move(request),
                              [endings](auto data, auto response, auto error) {
                                  endings->put({std::move(data), std::move(response), error});
                              })
        ->resume();
    const auto ending = endings->wait(*session->delegateQueue());
    require(ending.data.has_value() != ending.error.has_value(), "a body or an error");
    require(!ending.data || ending.response, "a body comes with a response");
    require(!ending.data || ending.data->size() <= maximumBodySize, "bodies have a limit");
    if (ending.response) checkResponse(*ending.response);
    if (ending.error) checkError(*ending.error, input);
}
