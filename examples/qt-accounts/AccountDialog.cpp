#include "AccountDialog.h"

#include <QPushButton>

#include "Library.h"

/// An empty line is none.
static std::optional<std::string> textOf(const QLineEdit* line) {
    return line->text().isEmpty() ? std::nullopt : std::optional(line->text().toStdString());
}

AccountDialog::AccountDialog(QWidget* parent) : QDialog(parent) {
    form_->addRow("Service", service_);
    form_->addRow("Address", address_);
    form_->addRow("Sign in with", kind_);
    form_->addRow("User", user_);
    form_->addRow("Secret", secret_);
    form_->addRow("Client ID", clientID_);
    form_->addRow("Client secret", clientSecret_);
    form_->addRow(help_);
    form_->addRow(message_);
    message_->setObjectName("message");
    form_->addRow(buttons_);
    for (QLineEdit* line : {secret_, clientSecret_}) line->setEchoMode(QLineEdit::Password);
    help_->setOpenExternalLinks(true);
    message_->setWordWrap(true);
    message_->setTextFormat(Qt::PlainText);

    connect(service_, &QComboBox::currentIndexChanged, this, &AccountDialog::showService);
    connect(kind_, &QComboBox::currentIndexChanged, this, &AccountDialog::showKind);
    connect(buttons_, &QDialogButtonBox::accepted, this, &AccountDialog::submit);
    connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
    for (const auto& [type, serviceClass] : RKTService::classesByServiceType()) {
        if (serviceClass->supportedCredentialTypesForServiceType(type).empty()) continue;
        service_->addItem(serviceName(type), QString::fromStdString(type));
    }
}

AccountDialog::~AccountDialog() {
    if (asked_) asked_->invalidateAndCancel();
}

/// The library tells what a service needs.
void AccountDialog::showService() {
    const auto type = serviceType();
    const auto& serviceClass = *RKTService::classForServiceType(type);
    const auto url = serviceClass.defaultURLForServiceType(type);
    address_->setText(url ? qtText(url->absoluteString()) : QString());
    form_->setRowVisible(address_, serviceClass.requiresCustomURLForServiceType(type));
    const auto page = serviceClass.personalAccessTokenHelpURLForServiceType(type);
    const QString link = "<a href=\"%1\">How to make a token</a>";
    help_->setText(page ? link.arg(qtText(page->absoluteString()).toHtmlEscaped()) : "");
    kind_->clear();
    for (const auto& kind : serviceClass.supportedCredentialTypesForServiceType(type)) {
        const bool inBrowser = kind == RKTServiceCredentialTypeOAuth2;
        const char* secret = kind == RKTServiceCredentialTypeToken ? "Token" : "Password";
        kind_->addItem(inBrowser ? "Browser" : secret, QString::fromStdString(kind));
    }
}

void AccountDialog::showKind() {
    form_->setRowVisible(secret_, !signsIn());
    form_->setRowVisible(clientID_, signsIn());
    form_->setRowVisible(clientSecret_, signsIn());
    form_->setRowVisible(help_, !signsIn() && !help_->text().isEmpty());
    showMessage({}, true);
}

void AccountDialog::submit() {
    account_ = std::make_shared<RKTServiceCredentials>(
        serviceType(), kind_->currentData().toString().toStdString());
    account_->setURL(RKTURL::URLWithString(address_->text().toStdString()));
    account_->setUser(textOf(user_));
    if (!signsIn()) {
        account_->setToken(textOf(secret_));
        return validate();
    }
    const bool isBitbucket = serviceType() == RKTServiceTypeBitbucket;
    account_->setOAuthScopes(std::vector<std::string>{isBitbucket ? "repository" : "repo"});
    account_->setOAuthClientID(textOf(clientID_));
    account_->setOAuthClientSecret(textOf(clientSecret_));
    showMessage("Please go on in your browser.", false);
    signIn_ = std::make_unique<SignIn>(account_, [this](const std::optional<RKTError>& error) {
        error ? showMessage(errorText(*error), true) : validate();
    });
}

void AccountDialog::validate() {
    using Error = std::optional<RKTError>;
    showMessage("Asking " + service_->currentText() + "…", false);
    asked_ = RKTService::serviceWithCredentials(account_);
    asked_->validateCredentialsWithCompletionHandler(inMainThread<Error>(
        this,
        [this](const Error& error) { error ? showMessage(errorText(*error), true) : accept(); }));
    asked_->finishTasksAndInvalidate();  // after this one question
}

/// An error can be mended; anything else is to be waited for.
void AccountDialog::showMessage(const QString& message, bool isError) {
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(isError);
    message_->setText(message);
    message_->setStyleSheet(isError ? "color: #b42318" : "");
    form_->setRowVisible(message_, !message.isEmpty());
}
