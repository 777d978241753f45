// The application's main thread, as far as the library needs it.

#ifndef KORVOGITSERVICE_RKTMAINQUEUE_H
#define KORVOGITSERVICE_RKTMAINQUEUE_H

#include <cstddef>
#include <functional>

#include "KorvoGitService/RKTExport.h"

/// Runs what must happen on the application's main thread (the OAuth2 token update alone). Either
/// the application installs an executor, or it drains the library's own queue: now and then, or
/// when fileDescriptor() becomes readable. Without either, tasks wait for ever. Tasks come in the
/// order in which they were added. All operations are safe from any thread.
class RKT_EXPORT RKTMainQueue {
public:
    /// Something to run once. An exception from it goes through drain(), or through the executor's
    /// own loop.
    using Task = std::function<void()>;
    /// Takes a task and sees to it that it runs on the main thread, later: never inside the call,
    /// which comes from a thread of the library or from setExecutor(), one call at a time. An
    /// exception from it costs that task and comes out of the async() or setExecutor() that made
    /// the call, the first of several; on a thread of the library it ends the process. What a task
    /// holds is freed where it ran, wherever the executor's loop frees the task.
    using Executor = std::function<void(Task)>;

    RKTMainQueue() = delete;

    /// Tasks that are waiting go to the new executor, before any that are added from now on. An
    /// empty one gives the work back to the library's own queue. The former executor is not called
    /// any more when this returns, so what it uses may go then; to that end this waits for a call
    /// of it that another thread is making: hold no lock here that the executor takes.
    static void setExecutor(Executor executor);

    /// `dispatch_async` to the main queue.
    static void async(Task task);

    /// Runs the tasks that are waiting now, on the calling thread, and returns how many. Tasks that
    /// they add wait for the next call, so a draining loop is never trapped.
    static std::size_t drain();

    /// A descriptor for poll(2) and its kin: readable as long as tasks wait in the library's own
    /// queue. The library owns it for the life of the process: watch it, do not read or close it.
    /// -1 when the process has no descriptor left; ask again then.
    static int fileDescriptor();
};

#endif
