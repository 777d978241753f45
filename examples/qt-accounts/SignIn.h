#pragma once

#include <KorvoGitService/KorvoGitService.h>

#include <QTcpServer>
#include <functional>

class QTcpSocket;

/// A sign-in through the person's browser (RFC 8252): opens the service's page, waits on 127.0.0.1
/// for the browser to come back, and exchanges what it brings for a token in the record.
/// Destroying it ends it.
class SignIn : public QTcpServer {
public:
    /// Without an error the record has a token.
    using Ended = std::function<void(const std::optional<RKTError>& error)>;

    /// @param account with the client's ID and secret
    SignIn(std::shared_ptr<RKTServiceCredentials> account, Ended ended, QObject* parent = nullptr);
    ~SignIn() override;

private:
    void serve(QTcpSocket* browser);

    std::shared_ptr<RKTServiceCredentials> account_;
    Ended ended_;
    const RKTServiceClass& serviceClass_;
    std::shared_ptr<RKTURLSessionDataTask> task_;
};
