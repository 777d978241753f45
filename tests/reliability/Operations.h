// The three operations that send requests, as one.

#pragma once

#include <KorvoGitService/RKTService.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "tests/helpers/Loading.h"

enum class Operation { Validate, List, TokenExchange };

inline constexpr std::array allOperations = {Operation::Validate, Operation::List,
                                             Operation::TokenExchange};

const char* nameOf(Operation operation);
inline void PrintTo(Operation operation, std::ostream* stream) {
    *stream << nameOf(operation);
}

/// Zero for none.
inline std::int64_t codeOf(const std::optional<RKTError>& error) {
    return error ? error->code() : 0;
}

/// How long to wait for what must come.
inline constexpr auto patience = std::chrono::seconds(20);

/// Answers all three operations well, under every host's name.
void answerEverybody(emulator::Server& server);

/// A GitHub account that asks, by its service or, for the token exchange, which needs none, by its
/// record. It takes the shared network settings of the time when it is made.
class Asker {
public:
    using Calls = Awaited<std::optional<RKTError>>;

    explicit Asker(Operation operation);
    ~Asker();
    Asker(const Asker&) = delete;
    Asker& operator=(const Asker&) = delete;

    /// Starts the operation; what its handler receives goes into `calls`.
    std::shared_ptr<RKTURLSessionDataTask> start(const std::shared_ptr<Calls>& calls) const;
    /// Waits for what the handler of a task receives. Throws unless it is called exactly once and
    /// let go then, and the task is completed.
    std::optional<RKTError> outcome(const RKTURLSessionDataTask& task,
                                    const std::shared_ptr<Calls>& calls) const;
    /// Both in one.
    std::optional<RKTError> ask() const;

    /// The session's, on which answers are read.
    RKTOperationQueue& queue() const;
    /// Ends the service. False when something is left that holds it, such as an unfinished task.
    bool endsWithoutRest();

private:
    const Operation operation_;
    const std::shared_ptr<RKTServiceCredentials> credentials_;
    std::shared_ptr<RKTService> service_;
};
