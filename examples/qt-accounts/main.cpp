// An application with accounts at git hosting services. Its argument, if it has one, is the file
// with a certificate authority to trust, such as that of a test server.

#include <QApplication>

#include "Library.h"
#include "MainWindow.h"

int main(int argumentCount, char** arguments) {
    QApplication application(argumentCount, arguments);
    auto settings = RKTNetworkSettings::shared();
    if (argumentCount > 1) settings.certificateAuthorityFile = arguments[1];
    RKTNetworkSettings::setShared(settings);
    RKTMainQueue::setExecutor([thread = mainThread()](RKTMainQueue::Task task) {
        QMetaObject::invokeMethod(thread, std::move(task), Qt::QueuedConnection);
    });

    MainWindow window;
    window.show();
    const int status = QApplication::exec();
    RKTMainQueue::setExecutor({});
    return status;
}
