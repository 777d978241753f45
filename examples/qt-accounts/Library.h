// The library in a Qt application: its answers in the interface's thread, its texts as Qt's.

#pragma once

#include <KorvoGitService/KorvoGitService.h>

#include <QObject>
#include <QPointer>

/// Lives in the main thread, where it must be asked for first, and outlives the application: an
/// answer that comes very late waits in its queue for ever, which harms nobody.
inline QObject* mainThread() {
    static QObject* const object = new QObject;
    return object;
}

/// A handler for the library: hands its argument over to the main thread, where `function` runs
/// unless `receiver` is gone by then.
template <class Argument, class Function>
std::function<void(Argument)> inMainThread(QObject* receiver, Function function) {
    return [receiver = QPointer<QObject>(receiver), function](const Argument& argument) {
        const auto run = [receiver, function, argument] {
            if (receiver) function(argument);
        };
        QMetaObject::invokeMethod(mainThread(), run, Qt::QueuedConnection);
    };
}

/// Nothing is the empty text.
inline QString qtText(const std::optional<std::string>& text) {
    return QString::fromStdString(text.value_or(""));
}

inline QString serviceName(const std::string& type) {
    return qtText(RKTService::classForServiceType(type)->localizedNameForServiceType(type));
}

/// What happened and what the service suggests.
inline QString errorText(const RKTError& error) {
    const bool refused = error.domain() == RKTKorvoGitServiceErrorDomain &&
                         error.code() == RKTServiceErrorUnauthorized;
    const QString text = refused ? QString("The service does not accept the credentials.")
                                 : qtText(error.localizedDescription());
    return (text + "\n" + qtText(error.localizedRecoverySuggestion())).trimmed();
}
