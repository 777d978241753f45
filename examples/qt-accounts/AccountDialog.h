#pragma once

#include <KorvoGitService/KorvoGitService.h>

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>

#include "SignIn.h"

/// Asks for an account and is accepted when the service accepts it. Errors show in the dialog,
/// where they can be mended.
class AccountDialog : public QDialog {
public:
    explicit AccountDialog(QWidget* parent = nullptr);
    ~AccountDialog() override;

    const std::shared_ptr<RKTServiceCredentials>& account() const { return account_; }

private:
    void showService();
    void showKind();
    void submit();
    void validate();
    void showMessage(const QString& message, bool isError);
    std::string serviceType() const { return service_->currentData().toString().toStdString(); }
    bool signsIn() const { return kind_->currentData() == RKTServiceCredentialTypeOAuth2; }

    QFormLayout* form_ = new QFormLayout(this);
    QComboBox* service_ = new QComboBox;
    QLineEdit* address_ = new QLineEdit;
    QComboBox* kind_ = new QComboBox;
    QLineEdit* user_ = new QLineEdit;
    QLineEdit* secret_ = new QLineEdit;
    QLineEdit* clientID_ = new QLineEdit;
    QLineEdit* clientSecret_ = new QLineEdit;
    QLabel* help_ = new QLabel;
    QLabel* message_ = new QLabel;
    QDialogButtonBox* buttons_ =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    std::shared_ptr<RKTServiceCredentials> account_;
    std::shared_ptr<RKTService> asked_;
    std::unique_ptr<SignIn> signIn_;
};
