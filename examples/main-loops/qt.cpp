// The library's main queue in a Qt application.

#include <QCoreApplication>
#include <QMetaObject>

#include "SignIn.h"

int main(int argumentCount, char** arguments) {
    QCoreApplication application(argumentCount, arguments);

    // The library hands tasks to the event loop of the thread in which the application lives.
    RKTMainQueue::setExecutor([](RKTMainQueue::Task task) {
        QMetaObject::invokeMethod(qApp, std::move(task), Qt::QueuedConnection);
    });

    const SignIn signIn(argumentCount, arguments);
    signIn.start([](int exitStatus) { QCoreApplication::exit(exitStatus); });
    const int status = QCoreApplication::exec();

    // What comes after the application's end waits in the library's own queue.
    RKTMainQueue::setExecutor({});
    return status;
}
