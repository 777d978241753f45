// A session behind its public face.

#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "KorvoGitService/RKTURLSession.h"
#include "support/session/Loader.h"

namespace rkt {

/// Knows its unfinished tasks, weakly: whoever waits for a task keeps it. Ends when it was told to
/// and the last task is done, by letting go of its delegate on the queue; that breaks the only
/// cycle, delegate to session to delegate.
class SessionState : public std::enable_shared_from_this<SessionState> {
public:
    /// @param settings  nothing: those that are shared at the time of each request
    SessionState(std::shared_ptr<const RKTNetworkSettings> settings,
                 std::shared_ptr<RKTURLSessionDelegate> delegate,
                 std::shared_ptr<RKTOperationQueue> queue);

    std::shared_ptr<const RKTNetworkSettings> settings() const;
    const std::shared_ptr<RKTOperationQueue>& queue() const { return queue_; }
    /// Made when the first request needs it: a session that never loads anything has none.
    std::shared_ptr<SessionMemory> memory();

    /// False when the session was ended: the task is then not known to it, and must end as
    /// cancelled.
    bool add(const std::shared_ptr<TaskState>& task);
    /// The task was completed, or dropped before it was resumed.
    void remove(const TaskState& task);

    void end(bool cancelTasks);

private:
    using Tasks = std::unordered_map<const TaskState*, std::weak_ptr<TaskState>>;

    void letGoOfDelegate(std::shared_ptr<RKTURLSessionDelegate> delegate);

    const std::shared_ptr<const RKTNetworkSettings> settings_;
    const std::shared_ptr<RKTOperationQueue> queue_;

    std::mutex mutex_;
    std::shared_ptr<RKTURLSessionDelegate> delegate_;
    std::shared_ptr<SessionMemory> memory_;
    Tasks tasks_;
    bool ended_ = false;
};

}  // namespace rkt
