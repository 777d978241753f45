// The library's main queue on an Asio io_context.

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <exception>

#include "SignIn.h"

int main(int argumentCount, char** arguments) try {
    boost::asio::io_context context;
    // The context has nothing to do while the library waits for the answer, and runs on.
    auto work = boost::asio::make_work_guard(context);

    // The library hands tasks to whoever runs the context, which is this thread.
    RKTMainQueue::setExecutor(
        [&context](RKTMainQueue::Task task) { boost::asio::post(context, std::move(task)); });

    const SignIn signIn(argumentCount, arguments);
    int status = 1;
    signIn.start([&](int exitStatus) {
        status = exitStatus;
        work.reset();
    });
    context.run();

    // What comes after the context's end waits in the library's own queue.
    RKTMainQueue::setExecutor({});
    return status;
} catch (const std::exception& exception) {
    std::cerr << exception.what() << '\n';
    return 1;
}
