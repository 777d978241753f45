#include "SignIn.h"

#include <QDesktopServices>
#include <QRandomGenerator>
#include <QTcpSocket>
#include <QUrl>
#include <array>

#include "Library.h"

/// 256 bits that nobody can guess (RFC 6749 section 10.10).
static std::string randomState() {
    std::array<quint32, 8> bits = {};
    QRandomGenerator::system()->fillRange(bits.data(), bits.size());
    return QByteArray(reinterpret_cast<const char*>(bits.data()), sizeof bits)
        .toHex()
        .toStdString();
}

static void answer(QTcpSocket* browser, const QByteArray& status, const QByteArray& text) {
    browser->write("HTTP/1.1 " + status + "\r\nContent-Type: text/plain\r\nConnection: close\r\n" +
                   "Content-Length: " + QByteArray::number(text.size()) + "\r\n\r\n" + text);
    browser->disconnectFromHost();
}

SignIn::SignIn(std::shared_ptr<RKTServiceCredentials> account, Ended ended, QObject* parent)
    : QTcpServer(parent),
      account_(std::move(account)),
      ended_(std::move(ended)),
      serviceClass_(*RKTService::classForServiceType(account_->serviceType().value_or(""))) {
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* browser = nextPendingConnection()) {
            connect(browser, &QTcpSocket::disconnected, browser, &QObject::deleteLater);
            connect(browser, &QTcpSocket::readyRead, this, [this, browser] { serve(browser); });
        }
    });
    listen(QHostAddress::LocalHost);
    account_->setOAuthRedirectURL(
        RKTURL::URLWithString("http://127.0.0.1:" + std::to_string(serverPort()) + "/callback"));
    account_->setOAuthState(randomState());
    const auto url = serviceClass_.OAuth2AuthorizeURLForCredentials(*account_);
    QDesktopServices::openUrl(QUrl::fromEncoded(QByteArray::fromStdString(url->absoluteString())));
}

SignIn::~SignIn() {
    if (task_) task_->cancel();
}

void SignIn::serve(QTcpSocket* browser) {
    if (!browser->canReadLine()) return;
    // "GET /callback?code=…&state=… HTTP/1.1"; the header lines after it tell nothing.
    const auto words = browser->readLine().split(' ');
    browser->readAll();
    const bool isReturn =
        words.size() > 1 && words[0] == "GET" && words[1].startsWith("/callback?");
    const auto address = isReturn
                             ? RKTURL::URLWithString("http://127.0.0.1" + words[1].toStdString())
                             : std::nullopt;
    if (!address || !isListening()) return answer(browser, "404 Not Found", "Nothing is here.");
    std::optional<RKTError> error;
    const bool allowed = serviceClass_.updateCredentials(*account_, *address, &error);
    if (error && error->code() == RKTServiceErrorOAuth2StateMismatch) {
        // Not of this sign-in, so it does not end it.
        return answer(browser, "400 Bad Request", "This belongs to another sign-in.");
    }
    close();
    answer(browser, "200 OK", "You may close this page and go back to the application.");
    if (!allowed) return ended_(error);
    // The library writes the token into the record on the main queue, which is this thread's.
    task_ = serviceClass_.updateOAuth2AccessTokenWithCredentials(
        account_, false, inMainThread<std::optional<RKTError>>(this, ended_));
}
